// The figures as a Markdown page, and as lines of text while they come.
#pragma once

#include "bench/compare/row.h"

#include <string>
#include <vector>

std::string FormatSection(const Section& section);
// With date, processor, vector class, compiler and the peers' versions above the sections.
std::string FormatPage(const std::vector<Section>& sections);
