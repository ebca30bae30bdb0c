#pragma once

#include <model_Tessel/model_Tessel_global.h>

#include <memory>

class Dictionary;
class TOxEntity;
struct CSProModel;

/*!
 * \file DictionaryRelease.h
 * Deletes dictionaries: the tree that a database is generated from, and what was read of a CSPro
 * dictionary. The library itself never deletes what it handed out.
 */

/*!
 * Deletes \a entity, all below it, their variables and all that those hold. It may be null. The
 * entities are of class TOxEntity itself.
 */
MODEL_TESSEL_EXPORT void releaseEntity(TOxEntity* entity);

/*! Deletes \a dictionary with its tree and all else that it holds. It may be null. */
MODEL_TESSEL_EXPORT void releaseDictionary(Dictionary* dictionary);

/*!
 * Deletes the records, items, value sets, entries and lists of \a model, which are those that its
 * reader made, and sets its pointers to them to null. A TCSPro can only be deleted after it; the
 * fields of an importer that read it point to items that are gone.
 *
 * Value sets that several items share and entries that linked sets share are deleted once. What a
 * host took out of the lists is its own.
 */
MODEL_TESSEL_EXPORT void releaseModel(CSProModel& model);

/*! Deletes as releaseDictionary() does. */
struct DictionaryDeleter {
    /*! Deletes \a dictionary, which may be null. */
    void operator()(Dictionary* dictionary) const
    {
        releaseDictionary(dictionary);
    }
};

/*! Owns a dictionary with all that it holds. */
using DictionaryPointer = std::unique_ptr<Dictionary, DictionaryDeleter>;
