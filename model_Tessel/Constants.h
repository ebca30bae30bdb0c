#pragma once

#include <model_Tessel/model_Tessel_global.h>

#include <QString>
#include <QStringList>

/*!
 * \file Constants.h
 * String constants for hosts and for the class families that share them, one object each in the
 * library. Some are for hosts alone; a family may have a name of its own for the same text.
 */

/*! \name Field type names */
/*! @{ */
extern MODEL_TESSEL_EXPORT const QString TypeNameString;
extern MODEL_TESSEL_EXPORT const QString TypeNameReal;
extern MODEL_TESSEL_EXPORT const QString TypeNameInteger;
/*! @} */

/*! Provider type names; the index of a name is the number of the type. */
extern MODEL_TESSEL_EXPORT const QStringList ProviderTypeNames;

/*! \name Separators and small tokens */
/*! @{ */
extern MODEL_TESSEL_EXPORT const QString TokenColon;
extern MODEL_TESSEL_EXPORT const QString TokenComma;
extern MODEL_TESSEL_EXPORT const QString TokenLineEnd; /*!< carriage return and line feed */
extern MODEL_TESSEL_EXPORT const QString TokenEquals;
extern MODEL_TESSEL_EXPORT const QString TokenSemicolon;
extern MODEL_TESSEL_EXPORT const QString TokenSpace;
extern MODEL_TESSEL_EXPORT const QString TokenTab;
extern MODEL_TESSEL_EXPORT const QString TokenUnderscore;
extern MODEL_TESSEL_EXPORT const QString TokenYes;
/*! @} */

/*! \name Icons of the host application, as resource paths */
/*! @{ */
extern MODEL_TESSEL_EXPORT const QString IconAbout;
extern MODEL_TESSEL_EXPORT const QString IconChecklist;
extern MODEL_TESSEL_EXPORT const QString IconDictDatabase;
extern MODEL_TESSEL_EXPORT const QString IconFileExisting;
extern MODEL_TESSEL_EXPORT const QString IconFileGraphStyle;
extern MODEL_TESSEL_EXPORT const QString IconFileMaps;
extern MODEL_TESSEL_EXPORT const QString IconFileNew;
extern MODEL_TESSEL_EXPORT const QString IconFilePrograms;
extern MODEL_TESSEL_EXPORT const QString IconFileSelections;
extern MODEL_TESSEL_EXPORT const QString IconFileTableStyle;
extern MODEL_TESSEL_EXPORT const QString IconFxExpressions;
extern MODEL_TESSEL_EXPORT const QString IconNew;
extern MODEL_TESSEL_EXPORT const QString IconDocumentOpen;
extern MODEL_TESSEL_EXPORT const QString IconPlaceholder;
extern MODEL_TESSEL_EXPORT const QString IconSelection;
extern MODEL_TESSEL_EXPORT const QString IconProjectSave;
extern MODEL_TESSEL_EXPORT const QString IconProjectSaveAs;
extern MODEL_TESSEL_EXPORT const QString IconCodeName;
extern MODEL_TESSEL_EXPORT const QString IconContract;
extern MODEL_TESSEL_EXPORT const QString IconSummatory;
extern MODEL_TESSEL_EXPORT const QString IconEntityName;
extern MODEL_TESSEL_EXPORT const QString IconExpand;
extern MODEL_TESSEL_EXPORT const QString IconNodeInformation;
extern MODEL_TESSEL_EXPORT const QString IconYellowSquare;
extern MODEL_TESSEL_EXPORT const QString IconGraySquare;
extern MODEL_TESSEL_EXPORT const QString IconDelete;
extern MODEL_TESSEL_EXPORT const QString IconNext;
extern MODEL_TESSEL_EXPORT const QString IconPrevious;
/*! @} */

/*! \name Class names, the first argument of an error object */
/*! @{ */
extern MODEL_TESSEL_EXPORT const QString ClassNameCSPro;
extern MODEL_TESSEL_EXPORT const QString ClassNameCSProDataImport;
extern MODEL_TESSEL_EXPORT const QString ClassNameCSProValueSet;
extern MODEL_TESSEL_EXPORT const QString ClassNameDataImport;
extern MODEL_TESSEL_EXPORT const QString ClassNameSPSSDataImport;
extern MODEL_TESSEL_EXPORT const QString ClassNameRange;
extern MODEL_TESSEL_EXPORT const QString ClassNameVariable;
extern MODEL_TESSEL_EXPORT const QString ClassNameUtilities;
/*! @} */

/*! \name Section headers of a CSPro dictionary */
/*! @{ */
extern MODEL_TESSEL_EXPORT const QString CSProSectionDictionary;
extern MODEL_TESSEL_EXPORT const QString CSProSectionRecord;
extern MODEL_TESSEL_EXPORT const QString CSProSectionItem;
extern MODEL_TESSEL_EXPORT const QString CSProSectionValueSet;
extern MODEL_TESSEL_EXPORT const QString CSProSectionIdItems;
extern MODEL_TESSEL_EXPORT const QString CSProSectionLevel;
extern MODEL_TESSEL_EXPORT const QString CSProSectionRelation;
/*! @} */

/*! \name Section words of a CSPro dictionary, as compared after upper-casing */
/*! @{ */
extern MODEL_TESSEL_EXPORT const QString CSProTypeDictionary;
extern MODEL_TESSEL_EXPORT const QString CSProTypeRecord;
extern MODEL_TESSEL_EXPORT const QString CSProTypeItem;
extern MODEL_TESSEL_EXPORT const QString CSProTypeValueSet;
/*! @} */

/*! \name Keys of a CSPro dictionary */
/*! @{ */
extern MODEL_TESSEL_EXPORT const QString CSProKeyLabel;
extern MODEL_TESSEL_EXPORT const QString CSProKeyName;
extern MODEL_TESSEL_EXPORT const QString CSProKeyNote;
extern MODEL_TESSEL_EXPORT const QString CSProKeyRecordTypeStart;
extern MODEL_TESSEL_EXPORT const QString CSProKeyRecordTypeLen;
extern MODEL_TESSEL_EXPORT const QString CSProKeyPositions;
extern MODEL_TESSEL_EXPORT const QString CSProKeyZeroFill;
extern MODEL_TESSEL_EXPORT const QString CSProKeyDecimalChar;
extern MODEL_TESSEL_EXPORT const QString CSProKeyRecordTypeValue;
extern MODEL_TESSEL_EXPORT const QString CSProKeyRequired;
extern MODEL_TESSEL_EXPORT const QString CSProKeyMaxRecords;
extern MODEL_TESSEL_EXPORT const QString CSProKeyRecordLen;
extern MODEL_TESSEL_EXPORT const QString CSProKeyStart;
extern MODEL_TESSEL_EXPORT const QString CSProKeyLen;
extern MODEL_TESSEL_EXPORT const QString CSProKeyDataType;
extern MODEL_TESSEL_EXPORT const QString CSProKeyItemType;
extern MODEL_TESSEL_EXPORT const QString CSProKeyOccurrences;
extern MODEL_TESSEL_EXPORT const QString CSProKeyOccurrenceLabel; /*!< in its old spelling */
extern MODEL_TESSEL_EXPORT const QString CSProKeyDecimal;
extern MODEL_TESSEL_EXPORT const QString CSProKeyValue;
/*! @} */

/*! \name Flag words of a CSPro dictionary, as compared after upper-casing */
/*! @{ */
extern MODEL_TESSEL_EXPORT const QString CSProWordAlpha;
extern MODEL_TESSEL_EXPORT const QString CSProWordSubItem;
extern MODEL_TESSEL_EXPORT const QString CSProWordSpecial;
extern MODEL_TESSEL_EXPORT const QString CSProWordMissing;
extern MODEL_TESSEL_EXPORT const QString CSProWordNotAppl;
/*! @} */
