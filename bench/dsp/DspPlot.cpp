#include "bench/dsp/DspPlot.h"

#include "bench/dsp/DspModel.h"

#include <algorithm>
#include <cmath>
#include <juce_graphics/juce_graphics.h>

namespace Bench
{

namespace
{

constexpr int width = 1500;
constexpr int height = 1240;
constexpr int margin = 48;
constexpr int legendWidth = 330;
constexpr int axisWidth = 64;
constexpr double lowestHz = 20;
constexpr double highestHz = 20000;
constexpr int pointCount = 600;
constexpr double dbPerLine = 6;
constexpr double quietestDb = -96; ///< below it a curve counts as silent

const juce::Colour paper { 0xffffffff };
const juce::Colour panel { 0xfff7f9fb };
const juce::Colour ink { 0xff12222e };
const juce::Colour gridColour { 0xffdfe6ec };
const juce::Colour strongGrid { 0xffb9c5cf };
/** Told apart by people who see few colours, too (Okabe and Ito). */
const juce::Colour lineColours[] = { juce::Colour { 0xff0072b2 }, juce::Colour { 0xffd55e00 },
                                     juce::Colour { 0xff009e73 }, juce::Colour { 0xffcc79a7 },
                                     juce::Colour { 0xff56b4e9 }, juce::Colour { 0xffe69f00 },
                                     juce::Colour { 0xff5b4a8a } };

struct Curve
{
    juce::String label, remark;
    juce::Colour colour;
    float thickness = 2.0f;
    bool dashed = false;
    std::vector<double> db;                      ///< `pointCount` values
    std::vector<std::pair<double, double>> dots; ///< Hz, dB

    double highest() const { return *std::max_element(db.begin(), db.end()); }
    bool isSilent() const { return !(highest() > quietestDb); }
};

/** Whether nobody could tell them apart. */
bool coincide(const Curve& one, const Curve& other)
{
    constexpr double same = 0.05;
    return std::equal(one.db.begin(), one.db.end(), other.db.begin(),
                      [](double a, double b) { return std::abs(a - b) < same; });
}

double hzOfPoint(int point)
{
    return lowestHz * std::pow(highestHz / lowestHz, static_cast<double>(point) / (pointCount - 1));
}

template <typename Function>
std::vector<double> sampled(const Function& function)
{
    std::vector<double> values;
    for (int point = 0; point < pointCount; ++point)
        values.push_back(function(hzOfPoint(point)));
    return values;
}

std::vector<Curve> groupCurves(const DspMemory& memory)
{
    std::vector<Curve> curves, nominals;
    for (std::size_t index = 0; index < dspGroupCount; ++index)
    {
        const auto group = groupOf(memory, index);
        Curve curve { dspGroups[index].name,
                      group.inPath ? "in the path" : "out of the path",
                      lineColours[index],
                      2.2f,
                      false,
                      sampled([&](double hz) { return group.gainDb(hz); }),
                      {} };
        for (std::size_t band = 0; band < dspBandCount; ++band)
            if (const auto gain = group.bandDb(band); std::abs(gain) >= 0.05)
                curve.dots.emplace_back(dspBands[band].hz, gain);
        curves.push_back(std::move(curve));
        Curve nominal { "nominal " + juce::String(index + 1),
                        "the gains set, as analogue filters",
                        ink,
                        1.6f,
                        true,
                        sampled([&](double hz) { return group.nominalDb(hz); }),
                        {} };
        // Equalisers with the same settings have one nominal curve.
        const auto same = [&](const Curve& other) { return coincide(other, nominal); };
        if (const auto twin = std::find_if(nominals.begin(), nominals.end(), same); twin != nominals.end())
            twin->label << ", " << juce::String(index + 1);
        else
            nominals.push_back(std::move(nominal));
    }
    curves.insert(curves.end(), nominals.begin(), nominals.end());
    return curves;
}

std::vector<Curve> outputCurves(const DspMemory& memory)
{
    // Left and right share a colour; the right one is drawn dashed, and only where it differs.
    std::vector<Curve> curves;
    std::size_t colour = 0;
    for (const auto& output : outputsOf(memory))
    {
        auto db = sampled([&](double hz) { return output.gainDb(hz); });
        const bool isRight = output.name.ends_with(" right");
        if (isRight && curves.back().db == db)
        {
            curves.back().label = curves.back().label.upToLastOccurrenceOf(" left", false, false);
            continue;
        }
        colour += isRight ? 0 : 1;
        Curve curve { output.name, {}, lineColours[colour - 1], 2.2f, isRight, std::move(db), {} };
        constexpr double reference = 1000;
        curve.remark = curve.isSilent() ? "silent" : juce::String(output.gainDb(reference), 1) + " dB at 1 kHz";
        curves.push_back(std::move(curve));
    }
    return curves;
}

/** Draws one diagram with its legend. */
class Diagram
{
public:
    Diagram(juce::Graphics& graphics, juce::Typeface::Ptr plainFace, juce::Typeface::Ptr boldFace,
            juce::Rectangle<int> area)
        : g(graphics)
        , plain(std::move(plainFace))
        , bold(std::move(boldFace))
        , heading(area.removeFromTop(44))
        , legend(area.removeFromRight(legendWidth).withTrimmedLeft(28))
        , plot(area.withTrimmedLeft(axisWidth).withTrimmedBottom(52).toFloat())
    {
    }

    void draw(const juce::String& title, std::vector<Curve> curves, double leastSpan)
    {
        chooseRange(curves, leastSpan);
        spread(curves);
        setFont(bold, 22.0f);
        g.setColour(ink);
        g.drawText(title, heading, juce::Justification::topLeft);
        drawGrid();
        {
            const juce::Graphics::ScopedSaveState saved(g);
            g.reduceClipRegion(plot.toNearestInt());
            for (const auto& curve : curves)
                drawCurve(curve);
        }
        drawLegend(curves);
    }

private:
    juce::Graphics& g;
    juce::Typeface::Ptr plain, bold;
    juce::Rectangle<int> heading, legend;
    juce::Rectangle<float> plot;
    double lowestDb = 0, highestDb = 0;

    void setFont(const juce::Typeface::Ptr& face, float size) { g.setFont(juce::Font(face).withHeight(size)); }

    float xOf(double hz) const
    {
        const auto share = std::log(hz / lowestHz) / std::log(highestHz / lowestHz);
        return plot.getX() + static_cast<float>(share) * plot.getWidth();
    }

    float yOf(double db) const
    {
        const auto share = (highestDb - db) / (highestDb - lowestDb);
        return plot.getY() + static_cast<float>(share) * plot.getHeight();
    }

    void chooseRange(const std::vector<Curve>& curves, double leastSpan)
    {
        // What lies far below the loudest is cut off, so that the rest is still seen.
        constexpr double mostSpan = 72;
        double high = -leastSpan, low = leastSpan;
        bool any = false;
        for (const auto& curve : curves)
            if (!curve.isSilent())
            {
                high = any ? std::max(high, curve.highest()) : curve.highest();
                const auto lowest = *std::min_element(curve.db.begin(), curve.db.end());
                low = any ? std::min(low, lowest) : lowest;
                any = true;
            }
        if (!any)
            high = low = 0;
        low = std::max(low, high - mostSpan);
        constexpr double air = 1;
        const auto middle = std::round((high + low) / 2 / dbPerLine) * dbPerLine;
        highestDb = std::ceil(std::max(high + air, middle + leastSpan / 2) / dbPerLine) * dbPerLine;
        lowestDb = std::floor(std::min(low - air, middle - leastSpan / 2) / dbPerLine) * dbPerLine;
    }

    /** Curves that lie on each other become rims around the last of them. */
    static void spread(std::vector<Curve>& curves)
    {
        constexpr float rim = 3.2f;
        for (std::size_t i = 0; i < curves.size(); ++i)
            for (std::size_t later = i + 1; later < curves.size(); ++later)
                if (!curves[i].dashed && !curves[later].dashed && !curves[i].isSilent() &&
                    coincide(curves[i], curves[later]))
                    curves[i].thickness += rim;
    }

    void drawGrid()
    {
        g.setColour(panel);
        g.fillRect(plot);
        setFont(plain, 15.0f);
        for (double decade = 10; decade <= highestHz; decade *= 10)
            for (int step = 1; step <= 9; ++step)
                if (const auto hz = decade * step; hz >= lowestHz && hz <= highestHz)
                    drawVertical(hz, step);
        for (auto db = lowestDb; db <= highestDb + 0.5; db += dbPerLine)
        {
            g.setColour(std::abs(db) < 0.5 ? strongGrid.darker(0.3f) : gridColour);
            g.drawHorizontalLine(juce::roundToInt(yOf(db)), plot.getX(), plot.getRight());
            g.setColour(ink.withAlpha(0.75f));
            const auto text = juce::String(db > 0 ? "+" : "") + juce::String(juce::roundToInt(db)) + " dB";
            g.drawText(text, juce::Rectangle<float>(plot.getX() - axisWidth, yOf(db) - 10.0f, axisWidth - 8.0f, 20.0f),
                       juce::Justification::centredRight);
        }
        g.setColour(strongGrid);
        g.drawRect(plot, 1.0f);
    }

    void drawVertical(double hz, int step)
    {
        g.setColour(step == 1 ? strongGrid : gridColour);
        g.drawVerticalLine(juce::roundToInt(xOf(hz)), plot.getY(), plot.getBottom());
        if (step != 1 && step != 2 && step != 5)
            return;
        g.setColour(ink.withAlpha(0.75f));
        const auto text =
            hz < 1000 ? juce::String(juce::roundToInt(hz)) + " Hz" : juce::String(juce::roundToInt(hz / 1000)) + " kHz";
        g.drawText(text, juce::Rectangle<float>(xOf(hz) - 40.0f, plot.getBottom() + 6.0f, 80.0f, 20.0f),
                   juce::Justification::centred);
    }

    void stroke(const juce::Path& path, const Curve& curve)
    {
        const juce::PathStrokeType type(curve.thickness, juce::PathStrokeType::curved);
        if (!curve.dashed)
        {
            g.strokePath(path, type);
            return;
        }
        constexpr float dashes[] = { 9.0f, 6.0f };
        juce::Path dashed;
        type.createDashedStroke(dashed, path, dashes, static_cast<int>(std::size(dashes)));
        g.fillPath(dashed);
    }

    void drawCurve(const Curve& curve)
    {
        if (curve.isSilent())
            return;
        juce::Path path;
        for (int point = 0; point < pointCount; ++point)
        {
            // A point far outside the diagram is as good as one at minus infinity.
            const auto db = std::clamp(curve.db[static_cast<std::size_t>(point)], lowestDb - 2 * dbPerLine,
                                       highestDb + 2 * dbPerLine);
            const juce::Point<float> at(xOf(hzOfPoint(point)), yOf(db));
            if (point == 0)
                path.startNewSubPath(at);
            else
                path.lineTo(at);
        }
        g.setColour(curve.dashed ? curve.colour.darker(0.4f) : curve.colour);
        stroke(path, curve);
        for (const auto& [hz, db] : curve.dots)
        {
            const auto dot = juce::Rectangle<float>(10.0f, 10.0f).withCentre({ xOf(hz), yOf(db) });
            g.setColour(paper);
            g.fillEllipse(dot);
            g.setColour(curve.colour);
            g.drawEllipse(dot, 2.0f);
        }
    }

    void drawLegend(const std::vector<Curve>& curves)
    {
        constexpr int fullHeight = 46;
        const auto rowHeight = juce::jmin(fullHeight, legend.getHeight() / static_cast<int>(curves.size()));
        auto rows = legend;
        for (const auto& curve : curves)
        {
            auto row = rows.removeFromTop(rowHeight);
            const auto sample = row.removeFromLeft(44).toFloat();
            juce::Path line;
            line.addLineSegment({ sample.getX(), sample.getY() + 11.0f, sample.getX() + 32.0f, sample.getY() + 11.0f },
                                0.1f);
            const float strength = curve.isSilent() ? 0.35f : 1.0f;
            g.setColour((curve.dashed ? curve.colour.darker(0.4f) : curve.colour).withAlpha(strength));
            stroke(line, curve);
            g.setColour(ink.withAlpha(0.95f * strength));
            setFont(plain, 17.0f);
            g.drawText(curve.label, row.removeFromTop(rowHeight / 2), juce::Justification::centredLeft);
            g.setColour(ink.withAlpha(0.6f * strength));
            setFont(plain, 14.0f);
            g.drawText(curve.remark, row.removeFromTop(rowHeight * 2 / 5), juce::Justification::centredLeft);
        }
    }
};

juce::Typeface::Ptr loadFace(const juce::File& file)
{
    juce::MemoryBlock data;
    if (!file.loadFileAsData(data) || data.isEmpty())
        return nullptr;
    return juce::Typeface::createSystemTypefaceFor(data.getData(), data.getSize());
}

juce::String subtitleOf(const DspMemory& memory)
{
    if (!isRunning(memory))
        return "The DSP does not run.";
    juce::String text = "48 kHz, from the words in memory.  ";
    for (std::size_t path = 0; path < dspPathCount; ++path)
        text << (path > 0 ? ",  " : "") << dspPaths[path].name << ": " << inputText(memory, path)
             << (isMuted(memory, path) ? " (muted)" : "");
    return text;
}

} // namespace

std::string plotDsp(const DspMemory& memory, const std::string& fontFolder, const std::string& file)
{
    const auto plain = loadFace(juce::File(fontFolder).getChildFile("DejaVuSans.ttf"));
    const auto bold = loadFace(juce::File(fontFolder).getChildFile("DejaVuSans-Bold.ttf"));
    if (plain == nullptr || bold == nullptr)
        return fontFolder + ": has no fonts";
    juce::Image image(juce::Image::RGB, width, height, true, juce::SoftwareImageType());
    {
        juce::Graphics g(image);
        g.fillAll(paper);
        auto area = juce::Rectangle<int>(width, height).reduced(margin, 36);
        g.setColour(ink);
        g.setFont(juce::Font(bold).withHeight(32.0f));
        g.drawText("Audio DSP: magnitude response", area.removeFromTop(40), juce::Justification::centredLeft);
        g.setColour(ink.withAlpha(0.6f));
        g.setFont(juce::Font(plain).withHeight(17.0f));
        g.drawText(subtitleOf(memory), area.removeFromTop(26), juce::Justification::centredLeft);
        area.removeFromTop(22);
        const auto upper = area.removeFromTop(area.getHeight() / 2);
        Diagram(g, plain, bold, upper).draw("Equalisers", groupCurves(memory), 24);
        Diagram(g, plain, bold, area.withTrimmedTop(12)).draw("Outputs, with every gain", outputCurves(memory), 36);
    }
    const auto target = juce::File::getCurrentWorkingDirectory().getChildFile(file);
    const juce::TemporaryFile written(target);
    auto stream = std::make_unique<juce::FileOutputStream>(written.getFile());
    if (!stream->openedOk() || !juce::PNGImageFormat().writeImageToStream(image, *stream))
        return file + ": cannot be written";
    stream.reset();
    return written.overwriteTargetFileWithTemporary() ? "" : file + ": cannot be written";
}

} // namespace Bench
