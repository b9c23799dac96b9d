#include "bench/program/Profile.h"

#include "bench/text/Names.h"

namespace BenchProgram
{

using namespace Pubhead;

std::string Profile::onOrder(const juce::StringArray&)
{
    return "there is nothing that this program does on order";
}

PageContent Profile::content(int page) const
{
    return plainContent(page, host.getSource());
}

juce::String Profile::favouriteLabel() const
{
    return pageName(host.getSource());
}

PageContent plainContent(int page, int source)
{
    PageContent content;
    const auto* info = Bench::pageInfo(page);
    content.title = info != nullptr ? info->title : pageName(page);
    content.status = page == source ? "Playing" : "Ready";
    return content;
}

} // namespace BenchProgram
