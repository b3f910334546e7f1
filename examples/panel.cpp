// Loads the control panel, applies the values of its widgets, and updates its texts.

#include "panel.h"

#include "common.h"

#include <ravolt.h>

#include <cmath>

namespace {

template <class Widget> Widget *find(RVNODE *root, const char *name) {
    return static_cast<Widget *>(root->findByNameInHierarchy(name));
}

constexpr float secondsOfARate = 0.5f;

} // namespace

bool Panel::load(const char *file) {
    const std::string folder = folderOf(file);
    RVFONT::setPath(folder.c_str());
    RVTEXTURE::setPath(folder.c_str());
    root = RAVOLT::loadXML(file);
    RVFONT *font = RVFONT::findByName("panel");
    if (!root || !font)
        return false;
    for (const char *name : {"bloom", "focus", "shadows"})
        find<RVBUTTON>(root, name)->setClickedStatus(true);
    slider("bloomIntensity")->setMaxValue(2);
    slider("bloomIntensity")->setValue(1);
    slider("focusDistance")->setMinValue(0.5f);
    slider("focusDistance")->setMaxValue(2);
    slider("focusDistance")->setValue(1);
    find<RVTEXTFIELD>(root, "pictureName")->clear();
    for (const char *key = "island"; *key; ++key)
        find<RVTEXTFIELD>(root, "pictureName")->manageKey(*key);
    showRate(0);
    return true;
}

RVHSCROLLBAR *Panel::slider(const char *name) const { return find<RVHSCROLLBAR>(root, name); }

void Panel::update(Example &example) {
    const unsigned int used = example.input.manageGUI();
    const RVNODE *save = find<RVBUTTON>(root, "picture");
    if (used == save->getId())
        picture = find<RVTEXTFIELD>(root, "pictureName")->getCaption();
    time += example.seconds();
    ++frames;
    if (time > secondsOfARate && !rateFixed)
        showRate(static_cast<float>(frames) / time);
}

void Panel::fixRate(float rate) {
    showRate(rate);
    rateFixed = true;
}

void Panel::operate(float progress) {
    const float wave = 0.5f - 0.5f * std::cos(6.2831853f * progress);
    slider("bloomIntensity")->setValue(1 + wave);
    slider("focusDistance")->setValue(1 - 0.5f * wave);
    find<RVBUTTON>(root, "shadows")->setClickedStatus(progress < 0.35f || progress > 0.6f);
}

void Panel::showRate(float rate) {
    find<RVLABEL>(root, "frames")->write("%.1f frames a second", static_cast<double>(rate));
    time = 0;
    frames = 0;
}

bool Panel::isOn(const char *name) const { return find<RVBUTTON>(root, name)->isClicked(); }
float Panel::getBloomFactor() const { return slider("bloomIntensity")->getValue(); }
float Panel::getFocusFactor() const { return slider("focusDistance")->getValue(); }

std::string Panel::takePictureName() {
    std::string name;
    name.swap(picture);
    return name;
}
