#pragma once

#include "Platform/Appearance.h"

namespace kiv {

// A desktop that wishes what it is told to wish.
class FakeAppearance : public Appearance {
public:
    bool isDark() const override { return dark_; }
    bool reducesMotion() const override { return reducesMotion_; }

    void setDark(bool dark) { set(dark_, dark); }
    void setReducesMotion(bool reduces) { set(reducesMotion_, reduces); }

private:
    void set(bool &wish, bool value) {
        if (wish == value) return;
        wish = value;
        changed.notify(*this);
    }

    bool dark_ = false;
    bool reducesMotion_ = false;
};

}  // namespace kiv
