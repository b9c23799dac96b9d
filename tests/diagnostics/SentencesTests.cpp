#include "diagnostics/Sentences.h"

#include "EngineApi/SystemState.h"
#include "diagnostics/Text.h"
#include "support/KernelFixture.h"

using namespace EngineLayer;
using Diagnostics::becauseOf;
using Diagnostics::sentenceOf;
using EngineApi::AppAction;
using EngineApi::SwitchType;
using Rule = Verdict::Rule;
using Pubhead::mbEQ;
using Pubhead::mbFM;
using Pubhead::NUM_OF_PAGES;

namespace
{

using Sentences = KernelFixture;

RequestRecord requestFor(int page, RequestReason reason)
{
    RequestRecord request;
    request.number = 12;
    request.request = { page, AppAction::ToRun, false };
    request.state = EngineApi::kBooting;
    request.reason = reason;
    request.asked = Platform::Clock::now();
    return request;
}

} // namespace

TEST_F(Sentences, EachRuleNamesBothPagesAndTheLevelsThatDecided)
{
    const struct
    {
        Verdict verdict;
        const char* sentence;
    } rows[] {
        { { Rule::onTop, mbFM, mbEQ, 21, 20 }, "mbFM is on top of mbEQ (show level 21 over 20)." },
        { { Rule::onTop, mbFM, mbFM, 21, 21 }, "mbFM is on top: nothing else competes for the screen." },
        { { Rule::onTop, mbFM, NUM_OF_PAGES, 21 }, "mbFM is on top: nothing else competes for the screen." },
        { { Rule::behind, mbFM, mbEQ, 21, 30 }, "mbFM stays behind mbEQ (show level 21 under 30)." },
        { { Rule::notRaised, mbFM, mbEQ },
          "mbFM was not brought to the front: nobody chose it, and what the unit asks for by itself does not push mbEQ "
          "away." },
        { { Rule::neverShown, mbFM }, "mbFM takes no part in the screen." },
        { { Rule::uncovered, mbFM, mbEQ, 20, 20 }, "mbFM is on top, as mbEQ has left the screen." },
        { { Rule::plays, mbFM, mbFM, 21, 21 }, "mbFM plays: nothing else did." },
        { { Rule::silences, mbFM, mbEQ, 21, 20 }, "mbFM plays in place of mbEQ (play level 21 over 20)." },
        { { Rule::silencedBy, mbFM, mbEQ, 20, 21 }, "mbFM was silenced by mbEQ (play level 20 under 21)." },
        { { Rule::outplayed, mbFM, mbEQ, 21, 60 },
          "mbFM stays silent: mbEQ plays, and mbFM does not outrank it (play level 21 against 60)." },
        { { Rule::mixes, mbFM, mbEQ, 41, 20 }, "mbFM and mbEQ play together." },
        { { Rule::neverPlays, mbFM }, "mbFM has no sound." },
        { { Rule::heir, mbFM, mbEQ, 20, 60 }, "mbFM plays, as mbEQ has stopped." },
        { { Rule::displaced, mbFM, mbEQ },
          "mbFM had to stop: a zone has one source at a time, and mbEQ took its place." },
        { { Rule::startedInstead, mbFM, mbEQ }, "mbFM was started, as nothing else would play when mbEQ stops." },
    };
    for (const auto& row : rows)
        EXPECT_EQ(sentenceOf(row.verdict), row.sentence);
}

TEST_F(Sentences, EachReasonOfARequestIsTold)
{
    const struct
    {
        RequestReason reason;
        const char* sentence;
    } rows[] {
        { RequestReason::stateRefuses, "The unit is in kBooting, which serves no such request." },
        { RequestReason::waitsForSwitch, "Another request is carried out first." },
        { RequestReason::queueFull, "Too many requests were waiting already." },
        { RequestReason::noHandler, "Nothing in the engine serves mbFM." },
        { RequestReason::notRunning, "mbFM did not run, so there was nothing to stop." },
        { RequestReason::cutShort, "The unit is switching off." },
        { RequestReason::nothingToDo, "All was as it was asked for already." },
        { RequestReason::none, "It is being carried out." },
    };
    for (const auto& row : rows)
        EXPECT_EQ(becauseOf(requestFor(mbFM, row.reason)), row.sentence);
}

// The page that has failed, or is missing, is another one than the request's; of the verdicts those of its own page count.
TEST_F(Sentences, ARequestIsExplainedByItsOrdersAndVerdicts)
{
    auto request = requestFor(mbFM, RequestReason::ordersRefused);
    request.orders = { { mbFM, SwitchType::ToRun, true, true }, { mbEQ, SwitchType::ToChange, true, false } };
    EXPECT_EQ(becauseOf(request), "mbEQ could not carry out its order.");
    request.orders.pop_back();
    EXPECT_EQ(becauseOf(request), "An order could not be carried out.") << "that of the sound, which has no page";

    request.reason = RequestReason::timeOut;
    request.orders.push_back({ mbEQ, SwitchType::ToChange, false, false });
    EXPECT_THAT(becauseOf(request), testing::StartsWith("mbEQ ("));
    EXPECT_THAT(becauseOf(request), testing::EndsWith(" did not report its order within 3 s."));

    request.reason = RequestReason::none;
    request.verdicts = { { Rule::uncovered, mbEQ, mbFM }, { Rule::neverPlays, mbFM }, { Rule::mixes, mbFM, mbEQ } };
    EXPECT_EQ(becauseOf(request), "mbFM has no sound. mbFM and mbEQ play together.");
    request.reason = RequestReason::nothingToDo;
    EXPECT_EQ(becauseOf(request), "mbFM has no sound. mbFM and mbEQ play together. So there was nothing to change.");

    auto stopped = requestFor(mbFM, RequestReason::none);
    stopped.finished = Platform::Clock::now();
    EXPECT_EQ(becauseOf(stopped), "mbFM was stopped.");
    EXPECT_THAT(Diagnostics::nameOf(stopped), testing::StartsWith("request 12 (mbFM ToRun, by the system, "));
}

TEST_F(Sentences, TimesAreAsExactAsAPersonNeedsThem)
{
    const std::pair<std::int64_t, const char*> rows[] {
        { 0, "0 ms" },        { 999, "999 ms" },    { 1000, "1.0 s" },        { 9'999, "9.9 s" },   { 10'000, "10 s" },
        { 119'999, "119 s" }, { 120'000, "2 min" }, { 7'199'999, "119 min" }, { 7'200'000, "2 h" },
    };
    for (const auto& [milliseconds, text] : rows)
        EXPECT_EQ(Diagnostics::durationText(milliseconds), text);
}
