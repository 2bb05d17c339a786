// Ctrl-C and its kin end a rendering at the next block instead of at once, so that it can tidy up.
#pragma once

// From here on signals to end are noted. Writing beyond a file size limit is an error like others.
void CatchInterruptions();

// The signal that came, or 0.
int Interruption();

// Ends the process by that signal, as whoever sent it expects.
[[noreturn]] void EndBy(int signal);
