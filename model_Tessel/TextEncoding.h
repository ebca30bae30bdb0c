#pragma once

#include <model_Tessel/model_Tessel_global.h>

#include <QByteArray>
#include <QChar>
#include <QString>

class QTextCodec;

/*!
 * \file TextEncoding.h
 * How the text of a file is decoded: as its byte-order mark says, else as is wanted, else as UTF-8
 * or, where it is none, as what was most common before.
 */

/*! The codec of texts that are no UTF-8 and say nothing of their encoding: Windows-1252. */
MODEL_TESSEL_EXPORT QTextCodec* codecBeforeUtf8();

/*! True when \a bytes are a whole text in the encoding of \a codec. */
MODEL_TESSEL_EXPORT bool isValidText(const QTextCodec& codec, const QByteArray& bytes);

/*! UTF-8 where \a bytes are valid UTF-8, else codecBeforeUtf8(); byte-order marks do not count. */
MODEL_TESSEL_EXPORT QTextCodec* likelyCodec(const QByteArray& bytes);

/*!
 * Line, from 1, of the first of \a bytes that is no text in the encoding of \a codec, in which a
 * line feed is a byte of its own; of valid ones the line behind the last.
 */
MODEL_TESSEL_EXPORT int firstInvalidLine(const QTextCodec& codec, const QByteArray& bytes);

/*!
 * The codec that \a bytes are to be decoded with first: of their byte-order mark, else \a wanted,
 * the name of one, else UTF-8; null where there is none of that name.
 */
MODEL_TESSEL_EXPORT QTextCodec* firstCodec(const QByteArray& bytes, const QByteArray& wanted = {});

/*! What a person should know of a text that is no UTF-8 and was decoded with codecBeforeUtf8(). */
MODEL_TESSEL_EXPORT QString assumedEncodingText();

/*! What a text was decoded with, and what came of it. */
struct DecodedText {
    const QTextCodec* codec = nullptr;
    QString text; /*!< without a byte-order mark; null when it is not valid */
    bool isValid = false;
    bool isAssumed = false; /*!< it is no UTF-8, and \c codec is codecBeforeUtf8() */
};

/*!
 * Decodes \a bytes. What a byte-order mark says goes before \a wanted, the name of a codec; without
 * either they are UTF-8 or else assumed to be of before it.
 */
MODEL_TESSEL_EXPORT DecodedText decodeText(const QByteArray& bytes, const QByteArray& wanted = {});

/*!
 * True for a character that no text file holds; an end-of-file mark of old and an escape do occur.
 */
inline bool isBinaryCharacter(QChar character)
{
    const ushort code = character.unicode();
    return code < 0x20 && (code < 0x08 || (code > 0x0D && code != 0x1A && code != 0x1B));
}
