#pragma once

// An interface of widgets, in pixels from the upper left corner of the window.

#include "tools/stage/drawable.h"
#include "tools/stage/effects.h"
#include "tools/stage/engine.h"

class RVNODE;

namespace ravolt::tool {

class Panel : public Drawable {
  public:
    // Takes the root of the widgets. Create it after the engine and destroy it before.
    explicit Panel(RVNODE *root);

    // Of a window that has all widgets, and a margin beside them.
    WindowSize fittingSize() const;

    void draw() override;
    // Widgets have no effects, and are drawn whole.
    void setEffects(const Effects &) override {}
    const Effects &getEffects() const override { return effects; }
    void setPart(const PicturePart &) override {}

  private:
    RVNODE *widgets;
    Effects effects;
};

} // namespace ravolt::tool
