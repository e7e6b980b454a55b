#pragma once

// The armour thickness picked in one of the two armour tables of the
// window; the collision model highlights plates of that thickness.
struct ArmorSelection
{
    bool highlight = false;
    float value = -1.0f;

    // A click on a thickness: selects it, unless it is the one selected,
    // which clears the selection. Returns whether a value is selected now.
    bool toggle(float clicked)
    {
        const float divisor = value == 0.0f ? 1.0f : value;
        const float change = (clicked - value) / divisor;
        if ((change < 0 ? -change : change) >= 1.1920929e-07f) {
            highlight = true;
            value = clicked;
        } else {
            highlight = false;
            value = -1.0f;
        }
        return highlight;
    }
};

// The selections of the regular and the spaced armour table.
struct ArmorSelections
{
    ArmorSelection regular;
    ArmorSelection spaced;
};
