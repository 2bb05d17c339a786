// What the tools ask of the system beyond the standard library; one file for each system stands behind it.
#pragma once

#include <string>
#include <vector>

// Makes the numbers of the standard streams taken, also where the caller closed them: a file that is opened later must
// never become what a message is written to. Called first of all.
void HoldStandardStreams();

// What follows the program's name, in UTF-8.
std::vector<std::string> Arguments(int argc, char** argv);

// The descriptor of a file that was not there before, for bytes in both directions; -1 and errno when it cannot be.
int CreateNewFile(const std::string& path);

// Has the signals noted with which users and systems end a program, but for those that it was told to ignore; and makes
// writing beyond a limit an error like others.
void NoteInterruptions(void (*note)(int signal));

// Whether messages go to a screen that understands control sequences.
bool MessagesAreWatched();
