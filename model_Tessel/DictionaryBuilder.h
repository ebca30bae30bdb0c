#pragma once

#include <model_Tessel/Config.h>
#include <model_Tessel/DictionaryRelease.h>
#include <model_Tessel/model_Tessel_global.h>

#include <QVector>

class TDataImport;
class TOxDataProvider;
struct TStatFileDescription;

/*!
 * \file DictionaryBuilder.h
 * Builds the dictionary that a database is generated from. DictionaryRelease.h deletes it.
 */

/*!
 * A new dictionary with the fields of \a provider, which releaseDictionary() deletes; made in time
 * linear in the fields and codes.
 *
 * Entities: the root has the name of the dictionary or, without one, of its file. Below it stands
 * one entity for each record type, in the importer's order; records that only fields name come
 * last.
 *
 * Variables: one for each field, in order; an occurrence has its number in digits. Those of no
 * record are the root's: the identification items, each of which leads the records of its level and
 * of those below and so the columns of their tables, or all fields of a source without records.
 *
 * Value labels: those of a CSPro item's first value set with values, special ones too; a range is
 * one label, "LOW:HIGH". Without an item, those of the field's joined text.
 *
 * Ranges, of numbers alone: the ranges and the ordinary codes of the item's
 * TCSProItem::boundingValueSet() where it was read as written, else the field's minimum
 * and maximum. A missing or not-applicable code
 * that is no number stays 0.
 *
 * Sharing: variables of one value set or one shared text have one list of value labels, those of
 * one value set one list of ranges; to change a single variable's, give it a list of its own.
 *
 * \param provider its importer, if it has one, is still there
 * \param lookups become the dictionary's; each marks the variables of the field or the repeated
 * item that it is named after
 */
MODEL_TESSEL_EXPORT Dictionary* buildDictionary(
    const TOxDataProvider& provider, const QVector<LookupDictionary>& lookups = {});

/*! The same with the fields that a provider takes from \a importer, which is opened. */
MODEL_TESSEL_EXPORT Dictionary* buildDictionary(
    TDataImport& importer, const QVector<LookupDictionary>& lookups = {});

/*!
 * The same for an SPSS or Stata file as readStatDescription() describes it, with what the fields of
 * its importer do not have: widths and types by the formats, the labels of every value, decimal
 * ones and those of long strings too, and missing values.
 *
 * The root has the file's rows as elements and its notes as documentation. The files tell no
 * ranges; that of a number is the one of its labelled values, without the missing ones, when there
 * are two or more and it is no scale. Its missing code is the first single one.
 */
MODEL_TESSEL_EXPORT Dictionary* buildDictionary(
    const TStatFileDescription& file, const QVector<LookupDictionary>& lookups = {});
