#include "lowlayer/BytePool.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <string>

using namespace LowLayer;

TEST(BytePoolTest, ABufferThatSomebodyHoldsStaysOut)
{
    BytePoolStore store("test", 32);
    auto held = store.obtain();
    const auto second = held;
    held->recycle();
    auto alone = store.obtain();
    EXPECT_NE(alone, held);
    alone->recycle();
    alone->recycle();
    EXPECT_EQ(store.obtain(), alone);
    EXPECT_NE(store.obtain(), alone) << "recycled twice, pooled once";
    alone->recycle();
    const auto listed = Platform::ListedPool::all();
    EXPECT_TRUE(std::ranges::any_of(listed, [](const auto& pool)
                                    { return std::string(pool.name) == "test" && pool.spare == 1; }));
    BytePool::Ptr free = new BytePool(8, nullptr);
    free->recycle();
}

TEST(BytePoolTest, AssignGrowsToWhatItIsGivenAndNeverReadsMore)
{
    BytePoolStore store("test", 4);
    auto buffer = store.obtain();
    EXPECT_EQ(buffer->length(), 0);
    const auto after = [&buffer](const char* source, int length)
    {
        buffer->assign(source, length);
        const std::string content(reinterpret_cast<const char*>(buffer->dataPointer()),
                                  static_cast<std::size_t>(buffer->length()));
        return std::pair(content, buffer->capacity());
    };
    EXPECT_EQ(after("abc", 3), std::pair(std::string("abc"), 4));
    EXPECT_EQ(after("abcdefgh", 7), std::pair(std::string("abcdefg"), 7));
    EXPECT_EQ(after("xy", 2), std::pair(std::string("xy"), 7));
    EXPECT_EQ(after(nullptr, 5), std::pair(std::string("xy"), 7));
}
