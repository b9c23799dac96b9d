#include "bench/program/CameraScene.h"

namespace BenchProgram
{

namespace
{

using Area = juce::Rectangle<float>;

/** Where things are, in parts of the picture's height. */
constexpr float horizon = 0.30f;
constexpr float transom = 0.90f;

/** A level of the guide lines: how far down it is, and half its width in parts of the picture's width. */
struct GuideLevel
{
    float down;
    float halfWidth;
    juce::uint32 colour;
};

/** From far to near; each level's colour is that of the lines that lead to it from the one before. */
constexpr GuideLevel guideLevels[] = { { 0.42f, 0.125f, 0xff43c26b },
                                       { 0.54f, 0.195f, 0xff43c26b },
                                       { 0.66f, 0.265f, 0xfff0b92e },
                                       { 0.78f, 0.335f, 0xffe5513f } };

juce::Point<float> placeIn(Area area, float right, float down)
{
    return { area.getX() + right * area.getWidth(), area.getY() + down * area.getHeight() };
}

void drawSkyAndWater(juce::Graphics& g, Area area, bool night)
{
    auto water = area;
    const auto sky = water.removeFromTop(area.getHeight() * horizon);
    g.setGradientFill(juce::ColourGradient::vertical(juce::Colour(night ? 0xff0d1826 : 0xff86b6d6), sky.getY(),
                                                     juce::Colour(night ? 0xff2a3f52 : 0xffdbe9ef), sky.getBottom()));
    g.fillRect(sky);
    g.setGradientFill(juce::ColourGradient::vertical(juce::Colour(night ? 0xff1f3647 : 0xff7fa9bd), water.getY(),
                                                     juce::Colour(night ? 0xff0a1620 : 0xff2b5d78), water.getBottom()));
    g.fillRect(water);

    juce::Path shore;
    shore.startNewSubPath(placeIn(area, 0.0f, horizon));
    for (const auto& [right, up] : { std::pair { 0.0f, 0.045f },
                                     { 0.10f, 0.060f },
                                     { 0.22f, 0.030f },
                                     { 0.34f, 0.012f },
                                     { 0.43f, 0.0f },
                                     { 0.66f, 0.0f },
                                     { 0.76f, 0.018f },
                                     { 0.87f, 0.036f },
                                     { 1.0f, 0.025f } })
        shore.lineTo(placeIn(area, right, horizon - up));
    shore.lineTo(placeIn(area, 1.0f, horizon));
    g.setColour(juce::Colour(night ? 0xff16242f : 0xff7d99a4));
    g.fillPath(shore);
}

void drawWaves(juce::Graphics& g, Area area, bool night)
{
    // The same waves in every picture; they grow and part towards the boat.
    juce::Random random(7);
    for (float down = horizon + 0.015f; down < transom; down += 0.012f + (down - horizon) * 0.09f)
    {
        const auto nearness = (down - horizon) / (transom - horizon);
        g.setColour(juce::Colours::white.withAlpha((night ? 0.06f : 0.13f) + 0.06f * nearness));
        const auto length = 0.02f + 0.06f * nearness;
        for (float right = random.nextFloat() * length * 3.0f; right < 1.0f;
             right += length * (2.0f + 2.5f * random.nextFloat()))
            g.drawLine({ placeIn(area, right, down), placeIn(area, right + length, down) }, 1.0f + 1.2f * nearness);
    }
}

/** The wake: two bands of foam that part where the boat has been. */
void drawWake(juce::Graphics& g, Area area, bool night)
{
    for (const auto side : { -1.0f, 1.0f })
    {
        juce::Path foam;
        foam.startNewSubPath(placeIn(area, 0.5f + side * 0.012f, horizon + 0.01f));
        foam.lineTo(placeIn(area, 0.5f + side * 0.10f, transom));
        foam.lineTo(placeIn(area, 0.5f + side * 0.24f, transom));
        foam.lineTo(placeIn(area, 0.5f + side * 0.018f, horizon + 0.01f));
        foam.closeSubPath();
        g.setGradientFill(juce::ColourGradient::vertical(
            juce::Colours::white.withAlpha(0.02f), area.getY() + horizon * area.getHeight(),
            juce::Colours::white.withAlpha(night ? 0.16f : 0.34f), area.getY() + transom * area.getHeight()));
        g.fillPath(foam);
    }
}

void drawStern(juce::Graphics& g, Area area, bool night)
{
    juce::Path deck;
    deck.startNewSubPath(placeIn(area, -0.01f, transom + 0.03f));
    deck.quadraticTo(placeIn(area, 0.5f, transom - 0.03f), placeIn(area, 1.01f, transom + 0.03f));
    deck.lineTo(placeIn(area, 1.01f, 1.01f));
    deck.lineTo(placeIn(area, -0.01f, 1.01f));
    deck.closeSubPath();
    g.setColour(juce::Colour(night ? 0xff3a4650 : 0xffe6e9e8));
    g.fillPath(deck);
    g.setColour(juce::Colour(night ? 0xff55636e : 0xffb4bdc0));
    g.strokePath(deck, juce::PathStrokeType(2.0f));
}

void drawGuides(juce::Graphics& g, Area area)
{
    constexpr float lineWidth = 4.0f;
    constexpr float tick = 0.05f;
    const auto* previous = &guideLevels[0];
    for (const auto& level : guideLevels)
    {
        g.setColour(juce::Colour(level.colour));
        for (const auto side : { -1.0f, 1.0f })
        {
            const auto corner = placeIn(area, 0.5f + side * level.halfWidth, level.down);
            g.drawLine({ placeIn(area, 0.5f + side * previous->halfWidth, previous->down), corner }, lineWidth);
            g.drawLine({ corner, placeIn(area, 0.5f + side * (level.halfWidth - tick), level.down) }, lineWidth);
        }
        previous = &level;
    }
}

} // namespace

void drawCameraScene(juce::Graphics& g, Area area, bool night)
{
    const juce::Graphics::ScopedSaveState unclipped(g);
    g.reduceClipRegion(area.toNearestInt());
    drawSkyAndWater(g, area, night);
    drawWaves(g, area, night);
    drawWake(g, area, night);
    drawStern(g, area, night);
    drawGuides(g, area);
}

} // namespace BenchProgram
