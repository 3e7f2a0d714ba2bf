// The scan and the sort over a real folder, and the line commands that
// change files, with no page: the list's arrays are looked at directly.
#include "tests/unit/flist/fl_fixture.h"

namespace {

TEST_F(FlScan, EmptyFolderShowsOnlyTheParentAndIsNoFailure)
{
    fl_level &lv = level();
    EXPECT_EQ(fl_scan(lv), 0);
    EXPECT_EQ(shown(lv), names{".."});
    EXPECT_EQ(lv.list.dir[0], fl_mode_index(fl_mode_letters(lv.list.dir[0])));
    EXPECT_EQ(fl_dirs[size_t(lv.list.dir[0])], dir); // `..` belongs to the folder above
    fl_parent = 0;
    EXPECT_EQ(fl_scan(lv), 28);
    EXPECT_EQ(lv.msg, ".... File not found");
}

TEST_F(FlScan, PatternsAndFilters)
{
    make("Makefile", 1);
    make("main.c", 2);
    make("util.c", 3);
    make("notes.txt", 4);
    mkdir((dir + "/w/sub.d").c_str(), 0755);
    fl_level &a = level("*", ".");
    ASSERT_EQ(fl_scan(a), 0);
    EXPECT_EQ(shown(a), (names{"..", "Makefile"}));
    fl_level &b = level("*", "c");
    ASSERT_EQ(fl_scan(b), 0);
    EXPECT_EQ(shown(b), (names{"..", "main.c", "util.c"}));
    fl_level &c = level();
    c.filter = FL_DIRSONLY;
    ASSERT_EQ(fl_scan(c), 0);
    EXPECT_EQ(shown(c), (names{"..", "sub.d"}));
    fl_level &d = level();
    d.filter = FL_FILESONLY;
    ASSERT_EQ(fl_scan(d), 0);
    EXPECT_EQ(d.list.count(), 4u); // no `..` when directories are left out
}

// A folder whose entries' status is taken on several threads (the share
// made small for the test): every entry, at either end of each share, gets
// its own size, and the folder among them is still left out by the
// files-only filter.
TEST_F(FlScan, SharedStatusGivesEveryEntryItsOwn)
{
    const size_t n = 301;
    fl_batch_size small(16);
    for (size_t i = 0; i < n; i++)
        make("f" + std::to_string(i) + ".t", i % 97);
    mkdir((dir + "/w/adir").c_str(), 0755);
    fl_level &lv = level();
    lv.filter = FL_FILESONLY;
    ASSERT_EQ(fl_scan(lv), 0);
    ASSERT_EQ(lv.list.count(), n);
    size_t right = 0;
    for (size_t i = 0; i < n; i++) {
        std::string b = fl_basename(lv.list.name[i]);
        size_t k = std::stoul(b.substr(1));
        right += lv.list.st[i].size == int64_t(k % 97) && S_ISREG(lv.list.st[i].mode) && lv.list.st[i].mtime > 0;
    }
    EXPECT_EQ(right, n);
}

TEST_F(FlScan, EverySortKeepsTheParentOnTop)
{
    make("b.zz", 30, 3000);
    make("a.yy", 10, 1000);
    make("c.xx", 20, 2000);
    make("ab", 5, 4000);
    fl_level &lv = level();
    ASSERT_EQ(fl_scan(lv), 0);
    expect_orders(lv, {
        {FL_BYNAME, {"..", "a.yy", "ab", "b.zz", "c.xx"}},
        {FL_BYNAME | FL_REVERSED, {"..", "c.xx", "b.zz", "ab", "a.yy"}},
        {FL_BYTYPE, {"..", "ab", "c.xx", "a.yy", "b.zz"}},
        {FL_BYTYPE | FL_REVERSED, {"..", "b.zz", "a.yy", "c.xx", "ab"}},
        {FL_BYSIZE, {"..", "ab", "a.yy", "c.xx", "b.zz"}},
        {FL_BYSIZE | FL_REVERSED, {"..", "b.zz", "c.xx", "a.yy", "ab"}},
        {FL_BYTIME, {"..", "a.yy", "c.xx", "b.zz", "ab"}},
        {FL_BYTIME | FL_REVERSED, {"..", "ab", "b.zz", "c.xx", "a.yy"}},
    });
}

// Names alike in their first eight bytes, and sizes all equal: the rest of
// the name decides, stem before extension, reversed as a whole; a file
// entered later takes its place in the order.
TEST_F(FlScan, TiesGoByTheWholeName)
{
    make("longname_b.c", 7, 1000);
    make("longname_a.c", 7, 1000);
    make("longname_a.b", 7, 1000);
    make("x.a", 7, 1000);
    fl_level &lv = level();
    ASSERT_EQ(fl_scan(lv), 0);
    expect_orders(lv, {
        {FL_BYSIZE, {"..", "longname_a.b", "longname_a.c", "longname_b.c", "x.a"}},
        {FL_BYTIME | FL_REVERSED, {"..", "x.a", "longname_b.c", "longname_a.c", "longname_a.b"}},
        {FL_BYTYPE, {"..", "x.a", "longname_a.b", "longname_a.c", "longname_b.c"}},
        {FL_BYNAME | FL_REVERSED, {"..", "x.a", "longname_b.c", "longname_a.c", "longname_a.b"}},
    });
    lv.sort = FL_BYSIZE;
    fl_sort(lv);
    make("longname_aa", 7, 1000);
    fl_status s = fl_stat_of(dir + "/w/longname_aa");
    ASSERT_TRUE(lv.list.add(dir + "/w/longname_aa", s, lv.dirindex));
    fl_sort_insert(lv, int32_t(lv.list.count() - 1));
    EXPECT_EQ(shown(lv), (names{"..", "longname_a.b", "longname_a.c", "longname_aa", "longname_b.c", "x.a"}));
}

TEST_F(FlScan, RescanKeepsTypedCommandsAndUnreadableFolderIsSaid)
{
    make("a", 1);
    fl_level &lv = level();
    ASSERT_EQ(fl_scan(lv), 0);
    lv.list.cmd[find(lv, "a")] = "xed";
    make("b", 1);
    ASSERT_EQ(fl_scan(lv), 0);
    EXPECT_EQ(lv.list.cmd[find(lv, "a")], "xed");
    EXPECT_EQ(lv.list.cmd[find(lv, "b")], "");
    if (geteuid() != 0) {
        chmod((dir + "/w").c_str(), 0);
        EXPECT_EQ(fl_scan(lv), 29);
        EXPECT_EQ(lv.msg, ".... Can't open directory " + fl_mode_letters(lv.dirindex));
        chmod((dir + "/w").c_str(), 0755);
    }
    (void)!std::system(("rm -rf '" + dir + "/w'").c_str());
    EXPECT_EQ(fl_scan(lv), 29);
}

TEST_F(FlScan, TheTableHoldsSevenHundredAndOneFolders)
{
    int idx = 0;
    ASSERT_EQ(fl_dir_enter(dir, idx), 0);
    EXPECT_EQ(idx, 1) << "the working directory is the first";
    ASSERT_EQ(fl_dir_enter(dir + "/w/../w/..", idx), 0);
    EXPECT_EQ(idx, 1) << "the same folder finds its place again";
    for (int k = 2; k < FL_MAXDIRS; k++) {
        std::string d = dir + "/d" + std::to_string(k);
        mkdir(d.c_str(), 0755);
        ASSERT_EQ(fl_dir_enter(d, idx), 0);
        ASSERT_EQ(idx, k);
    }
    mkdir((dir + "/one-more").c_str(), 0755);
    EXPECT_EQ(fl_dir_enter(dir + "/one-more", idx), 5);
    EXPECT_EQ(fl_dir_message(5), ".... Too many directories");
    EXPECT_EQ(fl_dir_enter(dir + "/nowhere", idx), 2);
    EXPECT_EQ(fl_dir_enter("/" + std::string(600, 'x'), idx), 3);
}

TEST_F(FlScan, TheFirstEntryIsTheWorkingDirectoryAsItWasWrittenDot)
{
    fl_cwd_back back;
    ASSERT_EQ(chdir(dir.c_str()), 0);
    EXPECT_EQ(fl_path_text(), ".");
    ASSERT_EQ(fl_dirs.size(), 1u);
    EXPECT_EQ(fl_dirs[0], dir) << "kept by its real path";
    int idx = -1;
    ASSERT_EQ(fl_dir_enter(dir + "/w", idx), 0);
    EXPECT_EQ(fl_mode_letters(idx), "b ");
    ASSERT_EQ(fl_dir_enter(".", idx), 0);
    EXPECT_EQ(fl_mode_letters(idx), "a ");
    ASSERT_EQ(fl_dir_enter(dir + "/w/..", idx), 0);
    EXPECT_EQ(idx, 0);
    EXPECT_EQ(fl_path_text(), ".;" + dir + "/w");
    // After a CD the letters keep what they meant.
    ASSERT_EQ(chdir((dir + "/w").c_str()), 0);
    ASSERT_EQ(fl_dir_enter(".", idx), 0);
    EXPECT_EQ(idx, 1);
    ASSERT_EQ(fl_dir_enter("..", idx), 0);
    EXPECT_EQ(idx, 0);
    EXPECT_EQ(fl_path_text(), ".;" + dir + "/w");
    // A table made in a directory that is gone keeps the first place, which
    // no folder matches.
    mkdir((dir + "/gone").c_str(), 0755);
    ASSERT_EQ(chdir((dir + "/gone").c_str()), 0);
    ASSERT_EQ(rmdir((dir + "/gone").c_str()), 0);
    fl_dirs.clear();
    EXPECT_EQ(fl_path_text(), ".");
    ASSERT_EQ(fl_dir_enter(dir, idx), 0);
    EXPECT_EQ(idx, 1);
    EXPECT_EQ(fl_path_text(), ".;" + dir);
}

TEST_F(FlScan, EraseGoesToTheTrashAndMarksTheEntry)
{
    make("gone.txt", 7);
    make("keep.txt", 5);
    fl_level &lv = level();
    ASSERT_EQ(fl_scan(lv), 0);
    size_t g = find(lv, "gone.txt");
    ASSERT_EQ(fl_erase(lv, g), 0);
    EXPECT_TRUE(fl_removed(lv.list.st[g]));
    EXPECT_NE(access((dir + "/w/gone.txt").c_str(), F_OK), 0);
    EXPECT_EQ(access((dir + "/data/Trash/files/gone.txt").c_str(), F_OK), 0);
    EXPECT_EQ(access((dir + "/data/Trash/info/gone.txt.trashinfo").c_str(), F_OK), 0);
    // Again: the file is gone already.
    EXPECT_EQ(fl_erase(lv, g), 1);
    EXPECT_EQ(lv.msg, "..... File " + dir + "/w/gone.txt already erased");
    // The parent entry is no regular file.
    lv.msg.clear();
    EXPECT_EQ(fl_erase(lv, find(lv, "..")), 1);
    EXPECT_EQ(lv.msg, "..... File .. is not a regular file");
}

TEST_F(FlScan, EraseWhenTheTrashCannotBeMadeKeepsTheFile)
{
    make("stay.txt", 3);
    std::ofstream(dir + "/data") << "a file where the Trash's folder should be";
    fl_level &lv = level();
    ASSERT_EQ(fl_scan(lv), 0);
    size_t s = find(lv, "stay.txt");
    EXPECT_EQ(fl_erase(lv, s), 1);
    EXPECT_EQ(lv.msg, "..... Error while erasing " + dir + "/w/stay.txt");
    EXPECT_FALSE(fl_removed(lv.list.st[s]));
    EXPECT_EQ(access((dir + "/w/stay.txt").c_str(), F_OK), 0);
}

TEST_F(FlScan, CopyTargetsAndRefusals)
{
    make("a.txt", 4);
    mkdir((dir + "/w/sub").c_str(), 0755);
    fl_level &lv = level();
    ASSERT_EQ(fl_scan(lv), 0);
    size_t a = find(lv, "a.txt");
    ASSERT_EQ(fl_copy(lv, a, " = bak", false), 0);
    EXPECT_EQ(access((dir + "/w/a.bak").c_str(), F_OK), 0);
    EXPECT_NE(find(lv, "a.bak"), size_t(-1)) << "the copy is entered in the list";
    EXPECT_EQ(fl_copy(lv, a, " = bak", false), 1);
    EXPECT_EQ(lv.msg, ".... File " + dir + "/w/a.bak already exists;specify (rep");
    EXPECT_EQ(fl_copy(lv, a, " = bak (rep", false), 0);
    EXPECT_EQ(fl_copy(lv, a, " /n.old", false), 0);
    EXPECT_EQ(access((dir + "/w/a.old").c_str(), F_OK), 0);
    EXPECT_EQ(fl_copy(lv, a, " sub", false), 0);
    EXPECT_EQ(access((dir + "/w/sub/a.txt").c_str(), F_OK), 0);
    EXPECT_EQ(fl_copy(lv, a, " =", false), 1);
    EXPECT_EQ(lv.msg, "... Identical files");
    EXPECT_EQ(fl_copy(lv, a, " = (bogus", false), 1);
    EXPECT_EQ(lv.msg, ".... Invalid parameters for copy");
    EXPECT_EQ(fl_copy(lv, find(lv, "sub"), " x", false), 1);
    EXPECT_EQ(lv.msg, ".... Can't copy a directory");
    EXPECT_EQ(fl_copy(lv, a, " =", true), 1);
    EXPECT_EQ(lv.msg, ".... Identicals files");
    ASSERT_EQ(fl_copy(lv, a, " b txt", true), 0);
    EXPECT_EQ(fl_basename(lv.list.name[a]), "b.txt") << "a rename changes the entry in place";
    EXPECT_NE(access((dir + "/w/a.txt").c_str(), F_OK), 0);
}

} // namespace

TEST_F(FlScan, FirstLinesAreReadOnceAndAgainWhenTheFileChanges)
{
    std::ofstream(dir + "/w/t.txt") << "one\r\n\ttwo\n\n";
    make("big.dat", 10000, 1000000);
    mkdir((dir + "/w/sub").c_str(), 0755);
    fl_level &lv = level();
    ASSERT_EQ(fl_scan(lv), 0);
    size_t t = find(lv, "t.txt");
    // Line ends go, tabs are blanks, a blank line is still a line.
    EXPECT_EQ(fl_first_lines(lv.list, t), names({"one", " two", ""}));
    // Only the head of a file is read, and few of its lines kept.
    const names &big = fl_first_lines(lv.list, find(lv, "big.dat"));
    ASSERT_EQ(big.size(), 1u);
    EXPECT_EQ(big[0].size(), 4096u);
    EXPECT_TRUE(fl_first_lines(lv.list, find(lv, "sub")).empty());
    EXPECT_TRUE(fl_first_lines(lv.list, size_t(lv.list.order[0])).empty()); // the parent
    // Kept while the status the list has is the one read at...
    std::ofstream(dir + "/w/t.txt") << "changed\n";
    EXPECT_EQ(fl_first_lines(lv.list, t).front(), "one");
    // ...and read again when it is not.
    lv.list.st[t].mtime += 1;
    EXPECT_EQ(fl_first_lines(lv.list, t), names({"changed"}));
    // A removed file shows no lines, whatever was read before.
    lv.list.st[t].size = -1;
    EXPECT_TRUE(fl_first_lines(lv.list, t).empty());
}
