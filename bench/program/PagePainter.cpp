#include "bench/program/PagePainter.h"

#include "bench/program/CameraScene.h"
#include "bench/program/PageIcons.h"
#include "bench/text/Names.h"
#include "platform/base/Pubhead.h"

#include <cmath>

namespace BenchProgram
{

using namespace Pubhead;

namespace
{

constexpr auto left = juce::Justification::centredLeft;
constexpr auto right = juce::Justification::centredRight;
constexpr auto centred = juce::Justification::centred;
constexpr float tileCorner = 14.0f;
constexpr float notOffered = 0.38f;
constexpr int signHeight = 20;
constexpr int levelTextHeight = 26;
constexpr float bodySize = 22.0f; ///< the smallest that is read at arm's length
constexpr float headingSize = 26.0f;
/** Texts are made this much narrower before they end in dots. */
constexpr float narrowest = 0.85f;

juce::Font font(float size, bool bold = false)
{
    return juce::Font("DejaVu Sans", size, bold ? juce::Font::bold : juce::Font::plain);
}

} // namespace

PagePainter::PagePainter(juce::Graphics& graphics, const PageFrame& frameToPaint, const PageLayout& whereItIs,
                         const PageContent& whatItShows)
    : g(graphics)
    , frame(frameToPaint)
    , layout(whereItIs)
    , content(whatItShows)
    , colour(pageColour(frame.page))
    , accent(colour.interpolatedWith(ink(1.0f), frame.dark ? 0.3f : 0.4f))
    , lit(colour.interpolatedWith(juce::Colours::black, 0.3f))
{
}

void PagePainter::paint()
{
    const auto top = frame.dark ? juce::Colour(0xff132230) : juce::Colour(0xfff6f9fb);
    const auto bottom = frame.dark ? juce::Colour(0xff0a121a) : juce::Colour(0xffdde6ec);
    g.setGradientFill(juce::ColourGradient::vertical(top, 0.0f, bottom, static_cast<float>(PageLayout::height)));
    g.fillAll();
    switch (layout.kind)
    {
    case PageLayout::Kind::tiles:
        paintTiles();
        break;
    case PageLayout::Kind::keypad:
        paintKeypad();
        break;
    case PageLayout::Kind::rows:
        paintRows();
        break;
    case PageLayout::Kind::levels:
        paintLevels();
        break;
    case PageLayout::Kind::picture:
        paintPicture();
        break;
    case PageLayout::Kind::texts:
        paintTexts();
        break;
    }
    if (layout.kind != PageLayout::Kind::picture)
        paintFoot();
    paintButtons();
    paintIds();
    g.setColour(ink(0.12f));
    g.fillRoundedRectangle(frame.pressed.toFloat(), tileCorner);
}

void PagePainter::paintFoot()
{
    auto clock = layout.clock;
    g.setColour(ink(0.85f));
    g.setFont(font(46.0f));
    write(frame.clock, clock.removeFromTop(clock.getHeight() * 3 / 5), juce::Justification::bottomRight);
    g.setColour(ink(0.62f));
    g.setFont(font(bodySize));
    write(Bench::isRearZone(frame.page) ? "Rear zone" : "Front zone", clock, right);
    if (layout.kind == PageLayout::Kind::texts)
    {
        g.setColour(ink(0.72f));
        g.setFont(font(headingSize));
        write(content.detail, layout.note, left, 2);
        return;
    }
    paintPlate(layout.icon, 18.0f, 18.0f);
    // A keypad shows the status above its keys.
    const auto& second = layout.kind == PageLayout::Kind::keypad ? content.detail : content.status;
    auto area = layout.texts.withSizeKeepingCentre(layout.texts.getWidth(), second.isEmpty() ? 40 : 72);
    g.setColour(ink(0.95f));
    g.setFont(font(30.0f, true));
    write(content.title, area.removeFromTop(40), left);
    g.setColour(accent);
    g.setFont(font(24.0f));
    write(second, area, left);
}

void PagePainter::paintIds()
{
    g.setColour(ink(0.5f));
    g.setFont(font(14.0f));
    write(frame.ids, Area(PageLayout::width, PageLayout::height).removeFromBottom(18), centred);
}

void PagePainter::paintTexts()
{
    paintPlate(layout.icon, 28.0f, 42.0f);
    constexpr int titleHeight = 70;
    constexpr int statusHeight = 40;
    auto area = layout.texts.withSizeKeepingCentre(layout.texts.getWidth(), titleHeight + statusHeight);
    g.setColour(ink(0.95f));
    g.setFont(font(52.0f, true));
    write(content.title, area.removeFromTop(titleHeight), left, 2);
    g.setColour(accent);
    g.setFont(font(28.0f));
    write(content.status, area, left);
}

void PagePainter::paintTiles()
{
    for (std::size_t i = 0; i < layout.tiles.size(); ++i)
    {
        const auto& tile = content.tiles[i];
        const auto area = layout.tiles[i];
        const auto strength = tile.offered ? 1.0f : notOffered;
        const auto tileColour = pageColour(tile.page);
        g.setColour(card().withMultipliedAlpha(tile.offered ? 1.0f : 0.5f));
        g.fillRoundedRectangle(area.toFloat(), tileCorner);
        g.setColour(tile.lit ? tileColour : ink(0.10f));
        const auto edge = tile.lit ? 3.0f : 1.0f;
        g.drawRoundedRectangle(area.toFloat().reduced(edge / 2.0f), tileCorner, edge);
        auto inside = area.reduced(10);
        g.setColour(ink(0.88f * strength));
        if (tile.page == NUM_OF_PAGES)
        {
            g.setFont(font(bodySize));
            write(tile.label, inside, centred, 2);
            continue;
        }
        g.setFont(font(bodySize));
        const auto icon = inside.removeFromLeft(46).toFloat();
        write(tile.label, inside.withTrimmedLeft(8), left, 2);
        drawPageIcon(g, tile.page, icon.withSizeKeepingCentre(46.0f, 46.0f), tileColour.withAlpha(strength));
    }
}

void PagePainter::paintKeypad()
{
    fillTile(layout.entry);
    g.setColour(accent);
    g.setFont(font(27.0f));
    write(content.status, layout.entry.reduced(18, 0), left);
    for (std::size_t i = 0; i < layout.keys.size(); ++i)
    {
        const auto area = layout.keys[i];
        const auto id = PageLayout::keyIds[i];
        paintButton(area, {}, id == keypadEnter);
        g.setColour(ink(0.9f));
        g.setFont(font(36.0f));
        if (id < keypadBack)
            write(juce::String(id), area, centred);
        else
            drawKeyIcon(g, static_cast<KeypadKey>(id), area.toFloat().withSizeKeepingCentre(40.0f, 40.0f),
                        id == keypadEnter ? juce::Colours::white : ink(0.8f));
    }
}

void PagePainter::paintRows()
{
    g.setColour(card());
    g.fillRoundedRectangle(layout.list.toFloat(), tileCorner);
    juce::Path outline;
    outline.addRoundedRectangle(layout.list.toFloat(), tileCorner);
    for (std::size_t i = 0; i < layout.rows.size(); ++i)
    {
        const auto& row = content.rows[i];
        const auto area = layout.rows[i];
        if (row.lit)
        {
            const juce::Graphics::ScopedSaveState unclipped(g);
            g.reduceClipRegion(outline);
            g.setColour(colour.withAlpha(frame.dark ? 0.28f : 0.20f));
            g.fillRect(area);
            g.setColour(colour);
            g.fillRect(area.withWidth(5));
        }
        if (i > 0)
        {
            g.setColour(ink(0.10f));
            g.fillRect(area.withHeight(1));
        }
        const auto& keys = layout.steps[i];
        const auto plain = font(bodySize);
        const auto inside = area.withTrimmedLeft(20);
        if (keys.value.isEmpty())
        {
            writePair(row.label, plain, ink(0.9f), row.value, plain, row.lit ? accent : ink(0.62f),
                      inside.withTrimmedRight(20));
            continue;
        }
        g.setFont(plain);
        g.setColour(ink(0.9f));
        write(row.label, inside.withRight(keys.down.getX()), left);
        g.setColour(accent);
        write(row.value, keys.value, centred);
        g.setColour(ink(0.07f));
        for (const auto& key : { keys.down, keys.up })
            g.fillRoundedRectangle(key.reduced(4).toFloat(), tileCorner);
        paintSign(keys.down, false);
        paintSign(keys.up, true);
    }
    outlineTile(layout.list);
}

void PagePainter::paintLevels()
{
    fillTile(layout.list);
    paintCurve();
    for (std::size_t i = 0; i < layout.levels.size(); ++i)
        paintLevel(content.levels[i], layout.levels[i]);
}

void PagePainter::paintCurve()
{
    // Each level that stands along the curve is a mark on the scale of frequencies; between them it is logarithmic.
    std::vector<juce::Point<float>> marks; // octave, x
    const auto octave = [](double hz) { return static_cast<float>(std::log2(hz)); };
    for (std::size_t i = 0; i < layout.levels.size(); ++i)
        if (const auto hz = content.levels[i].hz; hz > 0)
            marks.emplace_back(octave(hz), layout.levels[i].toFloat().getCentreX());
    if (marks.size() < 2 || content.curve.empty())
        return;
    const auto xOf = [&](float wanted)
    {
        std::size_t above = 1;
        while (above + 1 < marks.size() && marks[above].x < wanted)
            ++above;
        return juce::jmap(wanted, marks[above - 1].x, marks[above].x, marks[above - 1].y, marks[above].y);
    };
    const auto& scale = content.levels.front();
    const auto track = trackOf(layout.levels.front());
    const auto pointOf = [&](const juce::Point<double>& point)
    { return juce::Point<float>(xOf(octave(point.x)), heightOn(track, scale, static_cast<float>(point.y))); };
    juce::Path line;
    line.startNewSubPath(pointOf(content.curve.front()));
    for (const auto& point : content.curve)
        line.lineTo(pointOf(point));
    const juce::Graphics::ScopedSaveState unclipped(g);
    g.reduceClipRegion(layout.list.reduced(1));
    const auto flat = heightOn(track, scale, 0.0f);
    g.setColour(ink(0.16f));
    g.drawHorizontalLine(juce::roundToInt(flat), static_cast<float>(layout.list.getX()),
                         static_cast<float>(layout.list.getRight()));
    auto below = line;
    below.lineTo(below.getCurrentPosition().withY(flat));
    below.lineTo(line.getBounds().getX(), flat);
    below.closeSubPath();
    g.setColour(colour.withAlpha(0.16f));
    g.fillPath(below);
    g.setColour(colour.withAlpha(0.8f));
    g.strokePath(line, juce::PathStrokeType(3.0f, juce::PathStrokeType::curved));
}

PagePainter::Area PagePainter::withoutTexts(Area level)
{
    return level.reduced(4, 8).withTrimmedTop(levelTextHeight).withTrimmedBottom(levelTextHeight);
}

juce::Rectangle<float> PagePainter::trackOf(Area level)
{
    const auto area = withoutTexts(level).reduced(0, signHeight);
    return area.withSizeKeepingCentre(8, area.getHeight() - 20).toFloat();
}

float PagePainter::heightOn(juce::Rectangle<float> track, const Level& level, float position)
{
    if (level.highest <= level.lowest)
        return track.getCentreY();
    const auto lowest = static_cast<float>(level.lowest);
    const auto highest = static_cast<float>(level.highest);
    return juce::jmap(juce::jlimit(lowest, highest, position), lowest, highest, track.getBottom(), track.getY());
}

void PagePainter::paintLevel(const Level& level, Area area)
{
    const auto texts = area.reduced(4, 8);
    g.setColour(ink(0.95f));
    g.setFont(font(bodySize, true));
    write(level.value, texts.withHeight(levelTextHeight), centred);
    g.setColour(ink(0.66f));
    g.setFont(font(bodySize));
    write(level.label, texts.withTop(texts.getBottom() - levelTextHeight), centred);
    if (!level.fixed)
    {
        auto signs = withoutTexts(area);
        paintSign(signs.removeFromTop(signHeight), true);
        paintSign(signs.removeFromBottom(signHeight), false);
    }
    const auto track = trackOf(area);
    g.setColour(ink(0.14f));
    g.fillRoundedRectangle(track, 4.0f);
    // The bar grows from nought, where the scale has one.
    const auto y = heightOn(track, level, static_cast<float>(level.position));
    const auto from = heightOn(track, level, 0.0f);
    g.setColour(colour);
    g.fillRoundedRectangle(track.withTop(juce::jmin(y, from)).withBottom(juce::jmax(y, from)), 4.0f);
    const auto knob = level.fixed ? juce::Rectangle<float>(14.0f, 14.0f) : juce::Rectangle<float>(34.0f, 14.0f);
    g.fillRoundedRectangle(knob.withCentre({ track.getCentreX(), y }), 7.0f);
}

void PagePainter::paintSign(Area area, bool plus)
{
    constexpr int length = 12;
    constexpr int thickness = 2;
    g.setColour(ink(0.5f));
    g.fillRect(area.withSizeKeepingCentre(length, thickness));
    if (plus)
        g.fillRect(area.withSizeKeepingCentre(thickness, length));
}

void PagePainter::paintPicture()
{
    const auto scene = layout.scene.toFloat();
    if (content.picture == PageContent::Picture::live)
        drawCameraScene(g, scene, frame.dark);
    else
    {
        g.setGradientFill(juce::ColourGradient::vertical(juce::Colour(0xff222a31), scene.getY(),
                                                         juce::Colour(0xff12171c), scene.getBottom()));
        g.fillRect(scene);
        auto area = layout.scene.withSizeKeepingCentre(layout.scene.getWidth(), 150).translated(0, -24);
        drawPageIcon(g, frame.page, area.removeFromTop(90).toFloat(), juce::Colours::white.withAlpha(0.35f));
        g.setColour(juce::Colours::white.withAlpha(0.85f));
        g.setFont(font(30.0f, true));
        write("No signal", area, centred);
    }
    const auto titleFont = font(bodySize, true);
    const auto statusFont = font(bodySize);
    const auto space = content.status.isEmpty() ? 0.0f : 16.0f;
    const auto wanted =
        titleFont.getStringWidthFloat(content.title) + space + statusFont.getStringWidthFloat(content.status);
    const auto chip = layout.texts.withWidth(juce::jmin(layout.texts.getWidth(), juce::roundToInt(wanted) + 36));
    g.setColour(juce::Colours::black.withAlpha(0.55f));
    g.fillRoundedRectangle(chip.toFloat(), tileCorner);
    writePair(content.title, titleFont, juce::Colours::white, content.status, statusFont,
              juce::Colours::white.withAlpha(0.8f), chip.reduced(16, 0));
}

void PagePainter::paintButtons()
{
    for (std::size_t i = 0; i < layout.buttons.size(); ++i)
        paintButton(layout.buttons[i], content.buttons[i].label, content.buttons[i].lit);
    for (const auto& button : layout.common)
        paintButton(button.area, button.label, false);
}

void PagePainter::paintPlate(Area area, float corner, float border)
{
    const auto plate = area.toFloat();
    g.setGradientFill(
        juce::ColourGradient::vertical(colour.brighter(0.12f), plate.getY(), colour.darker(0.35f), plate.getBottom()));
    g.fillRoundedRectangle(plate, corner);
    drawPageIcon(g, frame.page, plate.reduced(border), juce::Colours::white);
}

void PagePainter::fillTile(Area area)
{
    g.setColour(card());
    g.fillRoundedRectangle(area.toFloat(), tileCorner);
    outlineTile(area);
}

void PagePainter::outlineTile(Area area)
{
    g.setColour(ink(0.10f));
    g.drawRoundedRectangle(area.toFloat().reduced(0.5f), tileCorner, 1.0f);
}

void PagePainter::paintButton(Area area, const juce::String& label, bool isLit)
{
    if (isLit)
    {
        g.setColour(lit);
        g.fillRoundedRectangle(area.toFloat(), tileCorner);
    }
    else
        fillTile(area);
    g.setColour(isLit ? juce::Colours::white : ink(0.88f));
    g.setFont(font(bodySize));
    write(label, area.reduced(8, 0), centred, 2);
}

void PagePainter::write(const juce::String& text, Area area, juce::Justification place, int lines)
{
    g.drawFittedText(text, area, place, lines, narrowest);
}

void PagePainter::writePair(const juce::String& text, juce::Font textFont, juce::Colour textColour,
                            const juce::String& end, juce::Font endFont, juce::Colour endColour, Area area)
{
    constexpr int between = 16;
    if (end.isNotEmpty())
    {
        const auto wanted = endFont.getStringWidth(end) + 2;
        const auto rest = area.getWidth() - between - textFont.getStringWidth(text) - 2;
        const auto endArea =
            area.removeFromRight(juce::jmin(wanted, juce::jmax(rest, (area.getWidth() - between) / 2)));
        area.removeFromRight(between);
        g.setColour(endColour);
        g.setFont(endFont);
        write(end, endArea, right);
    }
    g.setColour(textColour);
    g.setFont(textFont);
    write(text, area, left);
}

juce::Colour PagePainter::ink(float strength) const
{
    return (frame.dark ? juce::Colours::white : juce::Colour(0xff12222e)).withAlpha(strength);
}

juce::Colour PagePainter::card() const
{
    // The picture is seen through what lies over it.
    const auto strength = layout.kind == PageLayout::Kind::picture ? 0.9f : 1.0f;
    return (frame.dark ? juce::Colour(0xff1d3142) : juce::Colours::white).withAlpha(strength);
}

} // namespace BenchProgram
