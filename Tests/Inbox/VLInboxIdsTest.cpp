#include "Inbox/VLInboxIds.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace vorlane {

namespace {

TEST(VLInboxIdsTest, IdsCannotBeChosenToCollide) {
    constexpr std::size_t kCount = 100'000;
    VLInboxIds ids;
    ids.reserve(kCount);
    const std::uint64_t buckets = ids.bucket_count();
    // With the identity as the hash, all of these share one bucket.
    for (std::uint64_t i = 0; i < kCount; ++i) ids.insert(i * buckets);
    ASSERT_EQ(ids.bucket_count(), buckets);
    std::size_t largest = 0;
    for (std::size_t bucket = 0; bucket < buckets; ++bucket) largest = std::max(largest, ids.bucket_size(bucket));
    EXPECT_LE(largest, 20U);
    EXPECT_EQ(ids.size(), kCount);
}

TEST(VLInboxIdsTest, EqualIdsHaveOneHash) {
    EXPECT_EQ(VLInboxIdHash()(7), VLInboxIdHash()(7));
    EXPECT_NE(VLInboxIdHash()(7), VLInboxIdHash()(8));
    EXPECT_NE(VLInboxIdHash()(7), 7U);
}

}  // namespace

}  // namespace vorlane
