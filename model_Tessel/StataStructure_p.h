#pragma once

#include <QByteArray>
#include <QVector>

class TStatInput;

// A text that a .dta file keeps for a variable, or for itself with the owner "_dta".
struct StataCharacteristic {
    QByteArray owner;
    QByteArray name;
    QByteArray text;
};

// The characteristics of a .dta file in its order, those before any damage.
QVector<StataCharacteristic> stataCharacteristics(TStatInput& input);

// True when every part of a .dta file stands where it should and ends where the next begins. Only
// formats from 108 on are judged, older ones never found sound.
bool isSoundStataFile(TStatInput& input);
