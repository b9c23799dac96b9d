#pragma once

#include <fstream>
#include <gtest/gtest.h>
#include <map>
#include <nlohmann/json.hpp>
#include <set>

/** A trace's file as a viewer reads it, held to the description of its format. */
class TraceDocument
{
public:
    using Json = nlohmann::json;

    explicit TraceDocument(const std::string& file)
    {
        std::ifstream stream(file);
        document = Json::parse(stream, nullptr, false);
        EXPECT_FALSE(document.is_discarded()) << "no JSON";
        if (document.is_discarded())
            return;
        for (const auto& event : document.at("traceEvents"))
            take(event);
        checkNesting();
        for (const auto& [arrow, ends] : arrows)
            EXPECT_EQ(ends, (std::vector<std::string> { "flow_out", "flow_in" })) << "arrow " << arrow;
    }

    const Json& facts() const { return document.at("otherData"); }
    /** The slices of a track in the order of time, those around others first. */
    std::vector<Json> slices(const std::string& track) const
    {
        const auto found = tracks.find(track);
        return found == tracks.end() ? std::vector<Json>() : byTrack.at(found->second);
    }
    std::vector<std::string> names(const std::string& track) const
    {
        std::vector<std::string> all;
        for (const auto& slice : slices(track))
            all.push_back(slice.at("name"));
        return all;
    }
    /** The track and the name of the slice where an arrow to this one begins; empty when there is none. */
    std::string cause(const Json& slice) const
    {
        return slice.contains("flow_in") ? sources.at(slice.at("bind_id")) : "";
    }

private:
    Json document;
    std::map<std::string, int> tracks;
    std::map<int, std::string> trackNames;
    std::map<int, std::vector<Json>> byTrack;
    std::map<std::uint64_t, std::vector<std::string>> arrows;
    std::map<std::uint64_t, std::string> sources;

    void take(const Json& event)
    {
        const std::string phase = event.at("ph");
        ASSERT_TRUE(event.at("name").is_string() && event.at("pid").is_number_integer() &&
                    event.at("tid").is_number_integer())
            << event;
        if (phase == "M")
        {
            ASSERT_TRUE(event.at("args").at("name").is_string()) << event;
            if (event.at("name") == "thread_name")
            {
                tracks[event.at("args").at("name")] = event.at("tid");
                trackNames[event.at("tid")] = event.at("args").at("name");
            }
            return;
        }
        ASSERT_EQ(phase, "X") << event;
        ASSERT_GE(event.at("ts").get<double>(), 0) << event;
        ASSERT_GE(event.at("dur").get<double>(), 0) << event;
        ASSERT_TRUE(trackNames.contains(event.at("tid"))) << "a track without a name: " << event;
        byTrack[event.at("tid")].push_back(event);
        for (const auto* end : { "flow_out", "flow_in" })
            if (event.contains(end))
            {
                const std::uint64_t arrow = event.at("bind_id");
                arrows[arrow].push_back(end);
                if (end == std::string("flow_out"))
                    sources[arrow] = trackNames[event.at("tid")] + ": " + event.at("name").get<std::string>();
            }
    }

    void checkNesting()
    {
        // Times are whole nanoseconds, and are compared as such.
        const auto nanoseconds = [](const Json& time) { return std::llround(time.get<double>() * 1000); };
        for (auto& [track, all] : byTrack)
        {
            std::ranges::stable_sort(all, {},
                                     [&](const Json& slice)
                                     { return std::pair(nanoseconds(slice["ts"]), -nanoseconds(slice["dur"])); });
            std::vector<std::int64_t> ends;
            for (const auto& slice : all)
            {
                const auto begin = nanoseconds(slice["ts"]), end = begin + nanoseconds(slice["dur"]);
                while (!ends.empty() && ends.back() <= begin)
                    ends.pop_back();
                EXPECT_TRUE(ends.empty() || end <= ends.back())
                    << trackNames[track] << ": neither in nor after what is before it: " << slice;
                ends.push_back(end);
            }
        }
    }
};
