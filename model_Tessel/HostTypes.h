#pragma once

/*!
 * \file HostTypes.h
 * Types of the host application, which the library only points to or passes on.
 */

class TMavDatabaseCreationInfo;
class TMavDataset;
class TMavDictionary;
class TMavEntity;

enum eSelectionView : int;
