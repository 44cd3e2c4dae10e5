#pragma once

#include <QString>

#include "Editor/Surfaces/ValueScenes.h"

namespace kiv {

// A control with a number, as assistive tools use it.
class Adjustable {
public:
    virtual ~Adjustable() = default;

    virtual const ValueFacts &facts() const = 0;
    // The value as shown.
    virtual QString valueText() const = 0;
    virtual void setFromOutside(double value) = 0;
    virtual void stepFromOutside(int steps) = 0;
    // To type another value.
    virtual void openFromOutside() {}
};

}  // namespace kiv
