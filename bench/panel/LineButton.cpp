#include "bench/panel/LineButton.h"

namespace BenchPanel
{

LineButton::LineButton(Desk& deskToUse, const juce::String& label, ButtonLines linesToSay)
    : juce::Component(label)
    , desk(deskToUse)
    , lines(std::move(linesToSay))
{
    setWantsKeyboardFocus(true);
    setTitle(label);
    describe();
}

void LineButton::setLines(ButtonLines linesToSay)
{
    if (lines == linesToSay)
        return;
    lines = std::move(linesToSay);
    describe();
}

void LineButton::setLabel(const juce::String& label)
{
    if (label == getName())
        return;
    setName(label);
    setTitle(label);
    repaint();
}

void LineButton::setTone(Tone toneToShow)
{
    if (std::exchange(tone, toneToShow) != toneToShow)
        repaint();
}

void LineButton::setShortcut(const juce::String& name)
{
    shortcut = name;
    describe();
}

void LineButton::setNote(const juce::String& noteToShow)
{
    if (note == noteToShow)
        return;
    note = noteToShow;
    describe();
}

void LineButton::press()
{
    if (pressed)
        pressed();
    else
        desk.run(lines.click);
}

void LineButton::describe()
{
    auto text = lines.click;
    if (lines.longPress.isNotEmpty())
        text << "    long: " << lines.longPress;
    if (!lines.more.empty())
        text << "    right: more";
    for (const auto& each : { shortcut, note })
        text << (each.isEmpty() ? "" : "    ") << each;
    setTooltip(text);
}

void LineButton::paint(juce::Graphics& g)
{
    const auto& colours = Look::of(*this).colours;
    const auto fill = tone == Tone::lit ? colours.lit : tone == Tone::alarm ? colours.alarm : colours.button;
    Look::plate(g, getLocalBounds(),
                down            ? fill.contrasting(0.2f)
                : isMouseOver() ? fill.contrasting(0.08f)
                                : fill,
                hasKeyboardFocus(false) ? colours.accent : colours.buttonEdge);
    paintWords(g);
}

void LineButton::paintWords(juce::Graphics& g)
{
    g.setColour(Look::of(*this).colours.ink);
    g.setFont(Look::font(Look::bodySize));
    constexpr float narrowest = 0.8f;
    g.drawFittedText(getName(), getLocalBounds().reduced(2 * Look::grid, 0), juce::Justification::centredLeft, 1,
                     narrowest);
}

void LineButton::mouseDown(const juce::MouseEvent& event)
{
    if (event.mods.isPopupMenu())
    {
        offerMore();
        return;
    }
    down = true;
    if (lines.longPress.isNotEmpty())
        startTimer(longPressMs);
    repaint();
}

void LineButton::mouseUp(const juce::MouseEvent& event)
{
    stopTimer();
    const bool wasClick = std::exchange(down, false) && getLocalBounds().contains(event.getPosition());
    repaint();
    if (wasClick)
        press();
}

void LineButton::timerCallback()
{
    stopTimer();
    down = false;
    repaint();
    desk.run(lines.longPress);
}

bool LineButton::keyPressed(const juce::KeyPress& key)
{
    if (key == juce::KeyPress::returnKey || key == juce::KeyPress::spaceKey)
        press();
    else if (lines.longPress.isNotEmpty() &&
             key == juce::KeyPress(juce::KeyPress::returnKey, juce::ModifierKeys::shiftModifier, 0))
        desk.run(lines.longPress);
    else if (key == juce::KeyPress(juce::KeyPress::F10Key, juce::ModifierKeys::shiftModifier, 0))
        offerMore();
    else
        return false;
    return true;
}

void LineButton::offerMore()
{
    if (lines.more.empty())
        return;
    juce::PopupMenu menu;
    if (note.isNotEmpty())
        menu.addItem(note, false, false, {});
    for (const auto& line : lines.more)
        menu.addItem(line,
                     [safe = juce::Component::SafePointer(this), line]
                     {
                         if (safe != nullptr)
                             safe->desk.run(line);
                     });
    menu.setLookAndFeel(&getLookAndFeel());
    menu.showMenuAsync(juce::PopupMenu::Options().withTargetComponent(this));
}

} // namespace BenchPanel
