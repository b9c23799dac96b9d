#pragma once

#include "bench/panel/Area.h"
#include "bench/panel/ProgramDots.h"
#include "bench/panel/RequestWords.h"

namespace BenchPanel
{

/** What a place of the screen holds, and a sentence why, if there is one. */
class PageLine : public QuietButton
{
public:
    PageLine(Desk& deskToUse, const char* placeToShow);

    struct Shown
    {
        std::string title;  ///< of the page; "nothing"
        std::string name;   ///< of the page, for the console; "" for none
        std::string reason; ///< a sentence
        enum class Kind { empty, there, missing } kind = Kind::empty;
        bool operator==(const Shown&) const = default;
    };
    void show(Shown now);
    /** What its words take when it is so wide. */
    int heightFor(int width) const;

private:
    const juce::String place;
    Shown shown;

    void paintWords(juce::Graphics& g) override;
};

/** Who asked for a page, when, and what became of it. */
class RequestLine : public QuietButton
{
public:
    explicit RequestLine(Desk& deskToUse);

    /** `at`: when it was asked. Each answer of the engine tells it anew, and not quite the same. */
    void show(RequestWords now, juce::Time at);
    /** What its words take when it is so wide. */
    int heightFor(int width) const;

private:
    RequestWords words;
    juce::Time asked;

    void paintWords(juce::Graphics& g) override;
};

/** Which page is in front and why, the last requests, and the programs. */
class PagesPane : public Area
{
public:
    explicit PagesPane(Desk& deskToUse);

    void show(const PanelState& state) override;

private:
    static constexpr std::size_t requestCount = 3;

    /** Says "requests". */
    class Title : public QuietButton
    {
    public:
        using QuietButton::QuietButton;

    private:
        void paintWords(juce::Graphics& g) override;
    };

    PageLine front, behind, rear;
    Title title;
    std::vector<std::unique_ptr<RequestLine>> requests;
    std::size_t count = 0; ///< of those that the engine knows
    ProgramDots programs;
    std::shared_ptr<const EngineTold> told; ///< what is shown

    void showRequests();
    void resized() override { layOut(); }
    /** As much room for each as its words take, and no more requests than there is room for. */
    void layOut();
};

} // namespace BenchPanel
