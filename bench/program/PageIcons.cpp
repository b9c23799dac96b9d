#include "bench/program/PageIcons.h"

#include "platform/base/Pubhead.h"

namespace BenchProgram
{

using namespace Pubhead;

namespace
{

/** Icons are drawn on a square of this size and scaled. */
constexpr float gridSize = 24.0f;
constexpr float lineWidth = 1.7f;

void addArc(juce::Path& path, float x, float y, float radius, float fromDegrees, float toDegrees)
{
    path.addCentredArc(x, y, radius, radius, 0.0f, juce::degreesToRadians(fromDegrees),
                       juce::degreesToRadians(toDegrees), true);
}

void addLine(juce::Path& path, std::initializer_list<juce::Point<float>> points)
{
    for (auto point = points.begin(); point != points.end(); ++point)
        if (point == points.begin())
            path.startNewSubPath(*point);
        else
            path.lineTo(*point);
}

juce::Path radio()
{
    juce::Path path;
    path.addEllipse(10.6f, 9.6f, 2.8f, 2.8f);
    addLine(path, { { 12.0f, 12.4f }, { 12.0f, 21.0f } });
    for (const auto radius : { 5.0f, 8.6f })
    {
        addArc(path, 12.0f, 11.0f, radius, 45.0f, 135.0f);
        addArc(path, 12.0f, 11.0f, radius, 225.0f, 315.0f);
    }
    return path;
}

juce::Path weather()
{
    juce::Path path;
    addArc(path, 8.0f, 13.5f, 3.8f, 180.0f, 350.0f);
    addArc(path, 13.2f, 10.5f, 5.0f, 280.0f, 440.0f);
    addLine(path, { { 8.0f, 17.3f }, { 18.0f, 17.3f } });
    addArc(path, 18.0f, 14.2f, 3.1f, 0.0f, 180.0f);
    return path;
}

juce::Path usbStick()
{
    juce::Path path;
    path.addRoundedRectangle(7.0f, 9.0f, 10.0f, 12.5f, 2.0f);
    path.addRectangle(8.8f, 2.8f, 6.4f, 6.2f);
    addLine(path, { { 10.8f, 5.4f }, { 10.8f, 6.6f } });
    addLine(path, { { 13.2f, 5.4f }, { 13.2f, 6.6f } });
    return path;
}

juce::Path note()
{
    juce::Path path;
    path.addEllipse(4.5f, 15.5f, 5.0f, 4.4f);
    path.addEllipse(14.0f, 13.5f, 5.0f, 4.4f);
    addLine(path, { { 9.5f, 17.7f }, { 9.5f, 5.6f }, { 19.0f, 3.6f }, { 19.0f, 15.7f } });
    return path;
}

juce::Path phone()
{
    juce::Path path;
    path.addRoundedRectangle(7.0f, 2.5f, 10.0f, 19.0f, 2.2f);
    addLine(path, { { 10.6f, 18.4f }, { 13.4f, 18.4f } });
    return path;
}

juce::Path headphones()
{
    juce::Path path;
    addArc(path, 12.0f, 13.0f, 8.4f, 270.0f, 450.0f);
    path.addRoundedRectangle(3.0f, 13.0f, 4.0f, 7.2f, 1.6f);
    path.addRoundedRectangle(17.0f, 13.0f, 4.0f, 7.2f, 1.6f);
    return path;
}

juce::Path satellite()
{
    juce::Path path;
    addLine(path, { { 4.5f, 8.5f }, { 15.5f, 19.5f } });
    addArc(path, 10.0f, 14.0f, 7.78f, 135.0f, 315.0f);
    addLine(path, { { 10.0f, 14.0f }, { 14.8f, 9.2f } });
    addArc(path, 14.8f, 9.2f, 3.0f, 0.0f, 90.0f);
    addArc(path, 14.8f, 9.2f, 6.2f, 0.0f, 90.0f);
    return path;
}

juce::Path jack()
{
    juce::Path path;
    path.addRoundedRectangle(8.6f, 11.0f, 6.8f, 7.0f, 1.4f);
    addLine(path, { { 12.0f, 18.0f }, { 12.0f, 22.0f } });
    addLine(path, { { 10.4f, 11.0f }, { 10.4f, 5.0f }, { 12.0f, 2.4f }, { 13.6f, 5.0f }, { 13.6f, 11.0f } });
    addLine(path, { { 10.4f, 7.6f }, { 13.6f, 7.6f } });
    return path;
}

juce::Path cameraBody()
{
    juce::Path path;
    path.addRoundedRectangle(2.6f, 7.0f, 18.8f, 12.6f, 2.2f);
    path.addEllipse(8.4f, 9.7f, 7.2f, 7.2f);
    addLine(path, { { 8.2f, 7.0f }, { 9.6f, 4.4f }, { 14.4f, 4.4f }, { 15.8f, 7.0f } });
    return path;
}

juce::Path sliders()
{
    juce::Path path;
    const float knobs[] = { 14.0f, 7.0f, 11.0f };
    for (int i = 0; i < 3; ++i)
    {
        const auto x = 5.5f + 6.5f * static_cast<float>(i);
        addLine(path, { { x, 3.0f }, { x, knobs[i] - 1.8f } });
        path.addEllipse(x - 1.8f, knobs[i] - 1.8f, 3.6f, 3.6f);
        addLine(path, { { x, knobs[i] + 1.8f }, { x, 21.0f } });
    }
    return path;
}

juce::Path padlock()
{
    juce::Path path;
    path.addRoundedRectangle(5.0f, 10.5f, 14.0f, 10.5f, 2.0f);
    addLine(path, { { 8.0f, 10.5f }, { 8.0f, 7.5f } });
    addArc(path, 12.0f, 7.5f, 4.0f, 270.0f, 450.0f);
    addLine(path, { { 16.0f, 7.5f }, { 16.0f, 10.5f } });
    return path;
}

juce::Path power()
{
    juce::Path path;
    addArc(path, 12.0f, 13.0f, 8.0f, 35.0f, 325.0f);
    addLine(path, { { 12.0f, 3.0f }, { 12.0f, 12.0f } });
    return path;
}

juce::Path tiles()
{
    juce::Path path;
    for (const auto x : { 3.5f, 13.5f })
        for (const auto y : { 3.5f, 13.5f })
            path.addRoundedRectangle(x, y, 7.0f, 7.0f, 1.6f);
    return path;
}

juce::Path gear()
{
    juce::Path path;
    path.addEllipse(8.6f, 8.6f, 6.8f, 6.8f);
    constexpr int teeth = 8;
    for (int i = 0; i < teeth; ++i)
    {
        const auto angle = juce::MathConstants<float>::twoPi * static_cast<float>(i) / teeth;
        const juce::Point<float> centre(12.0f, 12.0f);
        addLine(path, { centre.getPointOnCircumference(6.6f, angle), centre.getPointOnCircumference(9.4f, angle) });
    }
    path.addEllipse(5.4f, 5.4f, 13.2f, 13.2f);
    return path;
}

juce::Path backArrow()
{
    juce::Path path;
    addLine(path, { { 2.5f, 12.0f }, { 8.5f, 5.5f }, { 21.5f, 5.5f }, { 21.5f, 18.5f }, { 8.5f, 18.5f } });
    path.closeSubPath();
    addLine(path, { { 12.2f, 9.2f }, { 17.8f, 14.8f } });
    addLine(path, { { 17.8f, 9.2f }, { 12.2f, 14.8f } });
    return path;
}

juce::Path tick()
{
    juce::Path path;
    addLine(path, { { 3.5f, 12.8f }, { 9.2f, 18.5f }, { 20.5f, 6.0f } });
    return path;
}

juce::Path iconOf(int page)
{
    switch (page)
    {
    case mbFM:
    case mbAM:
        return radio();
    case mbWB:
        return weather();
    case mbUSBAudio:
    case mbUSBVideo:
        return usbStick();
    case mbiPodAudio:
    case mbiPodVideo:
    case mbReariPod:
    case mbiPodPandora:
        return note();
    case mbBTPhone:
        return phone();
    case mbBTAudio:
        return headphones();
    case mbSirius:
        return satellite();
    case mbAuxin1:
    case mbAuxin2:
    case mbRearAV1:
    case mbRearAV2:
        return jack();
    case mbCamera:
        return cameraBody();
    case mbEQ:
        return sliders();
    case mbAntitheft:
        return padlock();
    case mbStandby:
    case mbAVOff:
        return power();
    case mbSetup:
        return gear();
    default:
        return tiles();
    }
}

void drawIcon(juce::Graphics& g, const juce::Path& icon, juce::Rectangle<float> area, juce::Colour colour)
{
    const auto scale = juce::jmin(area.getWidth(), area.getHeight()) / gridSize;
    const auto place = juce::AffineTransform::scale(scale).translated(area.getCentreX() - gridSize * scale / 2.0f,
                                                                      area.getCentreY() - gridSize * scale / 2.0f);
    g.setColour(colour);
    g.strokePath(icon, juce::PathStrokeType(lineWidth, juce::PathStrokeType::curved, juce::PathStrokeType::rounded),
                 place);
}

} // namespace

void drawPageIcon(juce::Graphics& g, int page, juce::Rectangle<float> area, juce::Colour colour)
{
    drawIcon(g, iconOf(page), area, colour);
}

void drawKeyIcon(juce::Graphics& g, KeypadKey key, juce::Rectangle<float> area, juce::Colour colour)
{
    drawIcon(g, key == keypadBack ? backArrow() : tick(), area, colour);
}

juce::Colour pageColour(int page)
{
    switch (page)
    {
    case mbFM:
    case mbAM:
    case mbWB:
        return juce::Colour(0xff2fa4c9);
    case mbUSBAudio:
    case mbUSBVideo:
        return juce::Colour(0xff4fae7c);
    case mbiPodAudio:
    case mbiPodVideo:
    case mbReariPod:
        return juce::Colour(0xffd0708f);
    case mbiPodPandora:
        return juce::Colour(0xff5b83d6);
    case mbBTPhone:
    case mbBTAudio:
        return juce::Colour(0xff3e7be0);
    case mbSirius:
        return juce::Colour(0xff8f74d8);
    case mbAuxin1:
    case mbAuxin2:
    case mbRearAV1:
    case mbRearAV2:
        return juce::Colour(0xffd99a3d);
    case mbCamera:
        return juce::Colour(0xff5fa8a0);
    case mbAntitheft:
        return juce::Colour(0xffd2604f);
    default:
        return juce::Colour(0xff6f8ea6);
    }
}

} // namespace BenchProgram
