// What becomes of a stored value when its attribute gets another data type.
//
// Layer: catalogue. A conversion loses nothing if converting back gives the value again: 2.0 may
// become the Integer 2, the text "2" the Integer 2, but "02" may not, nor 2.5. A list of one text
// counts as that text, true and false as 1 and 0. Nothing (no value, an empty text, an empty list)
// becomes nothing in every type but String, where an empty text is a text like others.
//
//     const Conversion mass = Convert(kxVariant(2.5), "Integer");   // mass.outcome == Refused
#pragma once

#include "catalogue/Value.h"

namespace kxudm::catalogue {

struct Conversion {
    enum class Outcome {
        Unchanged,  // the type takes the value as it is
        Whole,      // nothing is lost
        Rewritten,  // the type takes it, but what was written can't be told from the result
        Refused     // the type has no such value
    };

    Outcome outcome = Outcome::Unchanged;
    kxVariant value = {};  // the converted one; EMPTY where refused
};

// To the data type of that name, which must be a known one. Valid values are not looked at.
Conversion Convert(const kxVariant& value, const kxString& dataType);

}  // namespace kxudm::catalogue
