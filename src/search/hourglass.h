// Shows the hourglass over a form until the end of the block, then the default pointer, whatever it
// was before: the operation that set another one may have ended meanwhile.
//
//   const Hourglass hourglass{*this};
//
// The user-interface thread.
#pragma once

#include "toolkit/forms/form.h"

class Hourglass {
public:
    explicit Hourglass(forms::Form& form) : form_{form} {
        form_.setMousePointer(forms::MousePointer::hourglass);
    }
    ~Hourglass() { form_.setMousePointer(forms::MousePointer::standard); }
    Hourglass(const Hourglass&) = delete;
    Hourglass& operator=(const Hourglass&) = delete;

private:
    forms::Form& form_;
};
