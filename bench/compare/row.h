// One promise and what was measured of it.
#pragma once

#include <optional>
#include <string>
#include <vector>

enum class Bar { kAtLeast, kAtMost };

struct Row {
    std::string what;
    double measured;
    Bar sense = Bar::kAtLeast;
    std::optional<double> bar = {};   // none: a figure that is stated only
    std::string unit = {};            // after the figures; empty for a ratio

    bool Met() const { return !bar || (sense == Bar::kAtLeast ? measured >= *bar : measured <= *bar); }
};

struct Section {
    std::string title;   // a heading
    std::string text;    // what the figures are
    std::vector<Row> rows;
};

Section TransformRows();
Section TableRows();
Section EfficientRows();
Section ProRows();
Section SoloistRows();
Section ProgramRows();
Section GrowthRows();
Section GraphRows();
Section MemoryRows();
Section StartRows();
