// PlacedWindow: a window with a place and a size in twips; what forms and controls have in common.
//
//   form.move({180_tw, 60_tw, 1215_tw, 375_tw});
//   form.setLeft(form.left() + form.width());
//
// Twips become pixels at the window's own dots per inch. A form's place is relative to the screen,
// a control's to its container. The user-interface thread.
#pragma once

#include "toolkit/forms/units.h"
#include "toolkit/forms/window.h"

namespace forms {

struct Bounds {
    Twips left = {};
    Twips top = {};
    Twips width = {};
    Twips height = {};

    bool operator==(const Bounds&) const = default;
};

class PlacedWindow : public Window {
public:
    /// Place and size as they were last set; after another part moved the window, as it is now. So
    /// a size that is no whole number of pixels reads back as it was set.
    Bounds bounds() const;
    Twips left() const { return bounds().left; }
    Twips top() const { return bounds().top; }
    Twips width() const { return bounds().width; }
    Twips height() const { return bounds().height; }
    void move(const Bounds& bounds);
    void setLeft(Twips left);
    void setTop(Twips top);
    void setWidth(Twips width);
    void setHeight(Twips height);

    /// Puts the window where it was last moved to.
    virtual void applyBounds();

protected:
    /// The distance of two pixels.
    Twips twipsBetween(LONG from, LONG to) const;

    /// Where the window is, in pixels of its parent or, for a top-level window, of the screen.
    RECT pixelBounds() const;
    /// Where it was last moved to.
    RECT wantedPixels() const;
    /// The pixel that places are counted from.
    virtual POINT origin() const { return {0, 0}; }
    /// The pixels of the window when it is given `wanted`.
    virtual RECT adjustedBounds(const RECT& wanted) const { return wanted; }

    /// For a window that is not made yet: where it will be.
    void setInitialBounds(const Bounds& bounds) { bounds_ = bounds; }

private:
    Bounds bounds_;
};

}  // namespace forms
