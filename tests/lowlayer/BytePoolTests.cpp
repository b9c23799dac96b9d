#include "lowlayer/BytePool.h"

#include <gtest/gtest.h>
#include <string>

using namespace LowLayer;

namespace
{

std::string contentOf(const BytePool& buffer)
{
    return { reinterpret_cast<const char*>(buffer.dataPointer()), static_cast<std::size_t>(buffer.length()) };
}

} // namespace

TEST(BytePoolTest, ABufferThatSomebodyHoldsStaysOut)
{
    BytePoolStore store(32);
    auto held = store.obtain();
    const auto second = held;
    held->recycle();
    auto alone = store.obtain();
    EXPECT_NE(alone, held);
    alone->recycle();
    alone->recycle();
    EXPECT_EQ(store.obtain(), alone);
    EXPECT_NE(store.obtain(), alone) << "recycled twice, pooled once";
    BytePool::Ptr free = new BytePool(8, nullptr);
    free->recycle();
}

TEST(BytePoolTest, AssignGrowsToWhatItIsGivenAndNeverReadsMore)
{
    BytePoolStore store(4);
    auto buffer = store.obtain();
    EXPECT_EQ(buffer->length(), 0);
    buffer->assign("abc", 3);
    EXPECT_EQ(contentOf(*buffer), "abc");
    EXPECT_EQ(buffer->capacity(), 4);
    buffer->assign("abcdefgh", 7);
    EXPECT_EQ(contentOf(*buffer), "abcdefg");
    EXPECT_EQ(buffer->capacity(), 7);
    buffer->assign("xy", 2);
    EXPECT_EQ(contentOf(*buffer), "xy");
    EXPECT_EQ(buffer->capacity(), 7);
    buffer->assign(nullptr, 5);
    EXPECT_EQ(contentOf(*buffer), "xy");
}
