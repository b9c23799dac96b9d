#include "bench/program/PagePainter.h"

#include "bench/program/CameraScene.h"
#include "bench/program/PageIcons.h"
#include "bench/text/Names.h"
#include "platform/base/Pubhead.h"

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
        paintHeader();
        paintRows();
        break;
    case PageLayout::Kind::levels:
        paintHeader();
        paintLevels();
        break;
    case PageLayout::Kind::picture:
        paintPicture();
        break;
    case PageLayout::Kind::texts:
        paintTexts();
        break;
    }
    paintTopBar();
    paintButtons();
    g.setColour(ink(0.12f));
    g.fillRoundedRectangle(frame.pressed.toFloat(), tileCorner);
}

void PagePainter::paintTopBar()
{
    const auto bar = Area(PageLayout::width, PageLayout::topBarHeight).reduced(PageLayout::margin, 0);
    g.setFont(font(19.0f));
    g.setColour(ink(0.62f));
    write(Bench::isRearZone(frame.page) ? "Rear zone" : "Front zone", bar, left);
    g.setColour(ink(0.85f));
    write(frame.clock, bar, right);
}

void PagePainter::paintTexts()
{
    paintPlate(layout.icon, 28.0f, 42.0f);
    constexpr int titleHeight = 64;
    constexpr int statusHeight = 36;
    constexpr int detailHeight = 48;
    constexpr int footnoteHeight = 28;
    const bool hasDetail = content.detail.isNotEmpty();
    auto area = layout.texts.withSizeKeepingCentre(
        layout.texts.getWidth(), titleHeight + statusHeight + (hasDetail ? 6 + detailHeight : footnoteHeight));
    g.setColour(ink(0.95f));
    g.setFont(font(46.0f, true));
    write(content.title, area.removeFromTop(titleHeight), left, 2);
    g.setColour(accent);
    g.setFont(font(24.0f));
    write(content.status, area.removeFromTop(statusHeight), left);
    if (hasDetail)
    {
        area.removeFromTop(6);
        g.setColour(ink(0.66f));
        g.setFont(font(20.0f));
        write(content.detail, area, juce::Justification::topLeft, 2);
        return;
    }
    g.setColour(ink(0.45f));
    g.setFont(font(15.0f));
    write(frame.footnote, area, left);
}

void PagePainter::paintHeader()
{
    paintPlate(layout.icon, 12.0f, 10.0f);
    auto area = layout.texts;
    if (content.detail.isNotEmpty())
    {
        g.setColour(ink(0.62f));
        g.setFont(font(17.0f));
        write(content.detail, area.removeFromBottom(20), left);
    }
    writePair(content.title, font(26.0f, true), ink(0.95f), content.status, font(20.0f), accent, area);
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
            g.setFont(font(21.0f));
            write(tile.label, inside, centred, 2);
            continue;
        }
        g.setFont(font(18.0f));
        write(tile.label, inside.removeFromBottom(32), centred);
        drawPageIcon(g, tile.page, inside.toFloat().withSizeKeepingCentre(48.0f, 48.0f),
                     tileColour.withAlpha(strength));
    }
}

void PagePainter::paintKeypad()
{
    paintPlate(layout.icon, 14.0f, 16.0f);
    g.setColour(ink(0.95f));
    g.setFont(font(27.0f, true));
    write(content.title, layout.texts, left, 2);
    fillTile(layout.entry);
    g.setColour(accent);
    g.setFont(font(27.0f));
    write(content.status, layout.entry.reduced(18, 0), left);
    auto below = layout.entry.translated(0, layout.entry.getHeight() + 12).withHeight(52);
    g.setColour(ink(0.66f));
    g.setFont(font(19.0f));
    write(content.detail, below, juce::Justification::topLeft, 2);
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
        writePair(row.label, font(20.0f), ink(0.9f), row.value, font(20.0f), row.lit ? accent : ink(0.62f),
                  area.reduced(20, 0));
    }
    outlineTile(layout.list);
}

void PagePainter::paintLevels()
{
    for (std::size_t i = 0; i < layout.levels.size(); ++i)
        paintLevel(content.levels[i], layout.levels[i]);
}

void PagePainter::paintLevel(const Level& level, Area area)
{
    fillTile(area);
    area.reduce(4, 8);
    g.setColour(ink(0.95f));
    g.setFont(font(19.0f, true));
    write(level.value, area.removeFromTop(24), centred);
    g.setColour(ink(0.66f));
    g.setFont(font(17.0f));
    write(level.label, area.removeFromBottom(24), centred);
    paintSign(area.removeFromTop(signHeight), true);
    paintSign(area.removeFromBottom(signHeight), false);

    const auto track = area.withSizeKeepingCentre(8, area.getHeight() - 20).toFloat();
    g.setColour(ink(0.14f));
    g.fillRoundedRectangle(track, 4.0f);
    const auto heightOf = [&](int position)
    {
        return level.highest > level.lowest
                   ? juce::jmap(static_cast<float>(juce::jlimit(level.lowest, level.highest, position)),
                                static_cast<float>(level.lowest), static_cast<float>(level.highest), track.getBottom(),
                                track.getY())
                   : track.getCentreY();
    };
    // The bar grows from nought, where the scale has one.
    const auto y = heightOf(level.position);
    const auto from = heightOf(0);
    g.setColour(colour);
    g.fillRoundedRectangle(track.withTop(juce::jmin(y, from)).withBottom(juce::jmax(y, from)), 4.0f);
    const auto knob = juce::Rectangle<float>(34.0f, 14.0f).withCentre({ track.getCentreX(), y });
    g.fillRoundedRectangle(knob, 7.0f);
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
    const auto titleFont = font(20.0f, true);
    const auto statusFont = font(20.0f);
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
    g.setFont(font(19.0f));
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
    g.setFont(font(19.0f));
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
