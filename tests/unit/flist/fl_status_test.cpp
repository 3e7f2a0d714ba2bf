// The status taker on its own: every count of names around the batch size
// (none, one, a batch exactly, one more, two and a bit), each name given its
// own status in the order added, and a name that is not there left zero.
#include "tests/unit/flist/fl_fixture.h"

#include "flist/fl_status.h"

#include <fcntl.h>

namespace {

constexpr size_t BATCH = 4;

TEST_F(FlScan, StatusTakerGivesEachNameItsOwnAtEveryCount)
{
    fl_batch_size b(BATCH);
    const size_t most = 2 * BATCH + 1;
    for (size_t i = 0; i < most; i++)
        make("f" + std::to_string(i), i + 1);
    int fd = open((dir + "/w").c_str(), O_RDONLY | O_DIRECTORY);
    ASSERT_GE(fd, 0);
    for (size_t count : {size_t(0), size_t(1), BATCH, BATCH + 1, most}) {
        fl_status_taker taker(fd);
        // Added in reverse, so that the order kept is the order added and
        // not the folder's; the last name is not there.
        for (size_t k = count; k-- > 0;)
            taker.add("f" + std::to_string(k), k % 2 == 0);
        taker.add("gone", false);
        const std::deque<fl_batch> &batches = taker.finish();
        std::vector<std::string> seen;
        std::vector<int64_t> sizes;
        std::vector<bool> dirs;
        for (const fl_batch &bt : batches) {
            ASSERT_EQ(bt.st.size(), bt.starts.size());
            EXPECT_LE(bt.starts.size(), BATCH);
            for (size_t k = 0; k < bt.starts.size(); k++) {
                seen.emplace_back(bt.names.c_str() + bt.starts[k]);
                sizes.push_back(bt.st[k].size);
                dirs.push_back(bt.realdir[k]);
            }
        }
        ASSERT_EQ(seen.size(), count + 1) << count;
        for (size_t k = 0; k < count; k++) {
            size_t i = count - 1 - k;
            EXPECT_EQ(seen[k], "f" + std::to_string(i)) << count;
            EXPECT_EQ(sizes[k], int64_t(i + 1)) << count;
            EXPECT_EQ(dirs[k], i % 2 == 0) << count;
        }
        EXPECT_EQ(seen.back(), "gone");
        EXPECT_EQ(sizes.back(), 0);
    }
    close(fd);
}

}  // namespace
