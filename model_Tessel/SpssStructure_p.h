#pragma once

class TStatInput;

// True when every record of an SPSS file's dictionary is whole and of a known kind, and the file
// has the rows that it tells of, where they are not compressed.
bool isSoundSpssFile(TStatInput& input);
