#pragma once

/*!
 * Notes that the user wants the program to stop (Ctrl-C, or a signal to end), in place of its end;
 * as long as the object lives.
 */
class Interruption {
public:
    Interruption();
    ~Interruption();
    Interruption(const Interruption&) = delete;
    Interruption& operator=(const Interruption&) = delete;

    static bool isWanted();
};
