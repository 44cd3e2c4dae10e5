#pragma once

#include <string>

namespace kiv {

// A number as assistive tools want to know it, in the unit of its own.
struct ValueFacts {
    double value = 0, lo = 0, hi = 100, step = 1;

    friend bool operator==(const ValueFacts &, const ValueFacts &) = default;
};

// What a parameter cell shows: "Sensitivity" over "50 %".
struct ParameterCellScene {
    std::string label = {};
    std::string value = {};   // "50", "none"
    std::string unit = {};    // "%"; empty where the value is a word
    std::string second = {};  // the same in another unit, dim beside it: "−6.0 dB"
    ValueFacts facts = {};

    std::string text() const { return unit.empty() ? value : value + " " + unit; }
    friend bool operator==(const ParameterCellScene &, const ParameterCellScene &) = default;
};

// What a knob shows: how far it is turned, and the value in words under it.
struct KnobScene {
    std::string name = {};  // for those who cannot see where it stands
    double fraction = 0;    // 0 at the left end, 1 at the right
    double origin = 0;      // from where its arc is drawn: the left end, or for gains the top
    std::string text = {};  // "1.10 kHz"
    bool isOn = true;       // what it belongs to is switched on
    ValueFacts facts = {};

    friend bool operator==(const KnobScene &, const KnobScene &) = default;
};

}  // namespace kiv
