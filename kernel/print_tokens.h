// Lookup in the token table, for the scanner.
#pragma once

#include "kernel/text_output.h"

enum class TokenResult { kUnknown, kWritten, kCut };
TokenResult PutToken(WideView name, TextOutput& out);
