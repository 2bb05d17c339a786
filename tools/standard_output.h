// What goes to the standard output: said whole, or the program fails.
#pragma once

#include <string_view>

// Throws a data Failure when the text cannot be written, to a full disk or to nobody.
void Print(std::string_view text);
