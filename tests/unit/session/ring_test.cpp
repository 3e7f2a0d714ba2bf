// The file ring: ring numbers of new files, switching, neighbours, removal,
// sorting, and the per-extension defaults.
#include "fixture.h"

using Ring = EditorTest;

TEST_F(Ring, NewFileGoesRightAfterCurrent)
{
    file({}, "/a");   // ring 1
    file({}, "/b");   // after a: 2
    xfsetfile(0);
    xv->fileidx = 0;
    file({}, "/c");   // after a again: c 2, b 3
    EXPECT_EQ(ringpos, (std::vector<int32_t>{1, 3, 2}));
    // from a, ISWitch order is a c b
    xfsetfile(0);
    EXPECT_EQ(xfnextfile(), 2);
    xfsetfile(2);
    EXPECT_EQ(xfnextfile(), 1);
    xfsetfile(1);
    EXPECT_EQ(xfnextfile(), 0); // wraps to the smallest
    EXPECT_EQ(xfprevfile(), 2);
    xfsetfile(0);
    EXPECT_EQ(xfprevfile(), 1); // wraps to the greatest
}

TEST_F(Ring, SwitchWithOneFileStays)
{
    file({}, "/only");
    xfcmdline("switch");
    EXPECT_EQ(xfidx, 0);
    xfcmdline("iswitch");
    EXPECT_EQ(xfidx, 0);
}

TEST_F(Ring, SwitchToMovesFileNextToCurrent)
{
    file({}, "/a");
    file({}, "/b");
    file({}, "/c"); // ring a1 b2 c3, current c
    xfsetfile(0);
    xv->fileidx = 0;
    xfswitchto(2); // c moves right after a
    EXPECT_EQ(xfidx, 2);
    EXPECT_EQ(xfprevfile(), 0);
    xfsetfile(0);
    EXPECT_EQ(xfnextfile(), 2);
}

TEST_F(Ring, DeleteChoosesPreviousAndClosesGap)
{
    file({"x"}, "/a");
    file({"y"}, "/b");
    file({"z"}, "/c");
    xfsetfile(1);
    xv->fileidx = 1;
    xfdelfile();
    EXPECT_EQ(nbfiles(), 2);
    EXPECT_EQ(xf->fname, "/a");
    EXPECT_EQ(xv->fileidx, 0);
    EXPECT_EQ(ringpos, (std::vector<int32_t>{1, 2}));
    EXPECT_EQ(xv->perfile.size(), 2u);
    xfdelfile();
    xfdelfile();
    EXPECT_EQ(nbfiles(), 0);
    EXPECT_EQ(xf, nullptr);
}

TEST_F(Ring, SortMovesFilesAndViewsButNotRingNumbers)
{
    file({}, "/a");
    file({}, "/b");
    file({}, "/c");
    xv->perfile[0].curline = 10;
    std::vector<int32_t> before = ringpos;
    xfsortring(0, 2);
    EXPECT_EQ(files[2]->fname, "/a");
    EXPECT_EQ(files[0]->fname, "/b");
    EXPECT_EQ(xv->perfile[2].curline, 10);
    EXPECT_EQ(ringpos, before);
    EXPECT_EQ(xf->fname, "/c"); // still bound to the same file
}

TEST_F(Ring, ExtensionDefaults)
{
    file({}, "/x/prog.exe");
    EXPECT_EQ(xf->bin, 1);
    EXPECT_EQ(xf->keepblanks, 1); // BIN forces KEEPBLANKS
    ext_lrecl.push_back({"*", "80"});
    ext_lrecl.push_back({"c", "72"});
    ext_case.push_back({"", "URRI"});
    file({}, "/x/a.c");
    EXPECT_EQ(xf->lrecl, 72);
    EXPECT_EQ(xf->bin, 0);
    file({}, "/x/a.txt");
    EXPECT_EQ(xf->lrecl, 80);
    file({}, "/x.d/README");
    EXPECT_EQ(xf->case_mode, 3); // no extension: the empty entry
    EXPECT_EQ(xf->case_c, 1);
    EXPECT_EQ(xf->case_s, 0);
    keepblanks_global = 1;
    file({}, "/x/b.txt");
    EXPECT_EQ(xf->keepblanks, 1);
    keepblanks_global = -1;
    ext_lrecl.clear();
    ext_case.clear();
}

TEST_F(Ring, QuitFamily)
{
    file({"a"}, "/a");
    xf->chgcount = 1;
    xfcmdline("pquit");
    EXPECT_EQ(cmd_rc, 12);
    EXPECT_EQ(lastmsg(), "..... File has been changed; type QQUIT to quit anyway");
    xfcmdline("qquit x");
    EXPECT_EQ(cmd_rc, 5);
    EXPECT_EQ(lastmsg(), "..... Invalid parameters");
    file({"b"}, "/b");
    xfcmdline("qquit 7");
    EXPECT_EQ(cmd_rc, 7);
    EXPECT_EQ(nbfiles(), 1);
    xfcmdline("qquit");
    EXPECT_EQ(nbfiles(), 0);
    EXPECT_EQ(cmd_rc, 1); // the ring is empty and AUTOEXIT is off
}
