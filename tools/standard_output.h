// What goes to the standard output: said whole, or the program fails.
#pragma once

#include <string_view>

// Makes the numbers of the standard streams taken, also where the caller closed them: a file that is opened later must
// never become what a message is written to. Called first of all.
void HoldStandardStreams();

// Throws a data Failure when the text cannot be written, to a full disk or to nobody.
void Print(std::string_view text);
