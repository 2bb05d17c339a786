// Guesses the code page of a text by its bytes.
#pragma once

#include <windows.h>

struct CodePageCandidate {
    UINT codePage;
    int documentPercent;   // share of the text that reads well in it
    int confidence;        // percent
};

// At most count candidates, best first; gives how many. 0 when the text is empty or the system has no opinion.
int DetectCodePages(const char* pText, DWORD cb, CodePageCandidate* pCandidates, int count);
