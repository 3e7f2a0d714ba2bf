// The file box: walking folders by name and by the list, taking a file on
// its second choice, refusing names that are not there, "//last", the save
// mode's folder check, and the keys that end an editor's box.
#include "fields/dialogs/dialogs.h"
#include "fields/fs_int.h"
#include "tests/unit/fields/fs_fixture.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace {

namespace fsys = std::filesystem;

class FileBox : public FieldsTest {
 protected:
  std::string dir;  // a folder of its own: sub/ with b.txt and c.txt, and a.txt

  void SetUp() override {
    start(24, 80);
    std::string tmpl = (fsys::temp_directory_path() / "dyfiles.XXXXXX").string();
    ASSERT_NE(mkdtemp(tmpl.data()), nullptr);
    dir = fsys::canonical(tmpl).string();
    fsys::create_directory(dir + "/sub");
    for (const char *f : {"/a.txt", "/sub/b.txt", "/sub/c.txt"}) std::ofstream(dir + f) << "x\n";
  }
  void TearDown() override {
    as_readhook = nullptr;
    fsys::remove_all(dir);
    FieldsTest::TearDown();
    // fsend keeps the layer, which the fixture has just deleted: tests of
    // this program that run later without a screen must not reach it.
    fs.plat = nullptr;
  }
  int ask(int mode, const std::string &from, std::string &path, const std::string &keys) {
    rec->script(keys);
    return dy_filebox(mode, "Open", from, path);
  }
};

}  // namespace

TEST_F(FileBox, FolderTypedIsListedAndFileChosenTwiceIsTaken) {
  std::string path;
  // In sub/ the list holds ../, b.txt, c.txt: Down twice is c.txt; the
  // first Space puts it on the name line, the second takes it.
  ASSERT_EQ(ask(DY_FOPEN, dir, path, "type sub\nkey enter\nkey downarrow\nkey downarrow\nkey space\nkey space"), 1);
  EXPECT_EQ(path, dir + "/sub/c.txt");
  EXPECT_EQ(dy_lastfolder(), dir + "/sub");
  // "//last" starts where that box ended; ../ on the list goes up.
  path.clear();
  ASSERT_EQ(ask(DY_FOPEN, "//last", path, "type b.txt\nkey enter"), 1);
  EXPECT_EQ(path, dir + "/sub/b.txt");
  path.clear();
  ASSERT_EQ(ask(DY_FOPEN, "//last", path, "key uparrow\nkey space\nkey tab\ntype a.txt\nkey enter"), 1);
  EXPECT_EQ(path, dir + "/a.txt");
}

TEST_F(FileBox, MissingNameStaysInTheBoxAndCancelKeepsTheProposal) {
  std::string path = "proposed";
  // Enter on a name that is not there keeps the box; Escape then cancels.
  EXPECT_EQ(ask(DY_FOPEN, dir, path, "key end\ntype .txt\nkey enter\nkey escape"), 0);
  EXPECT_EQ(path, "proposed");
  // F3 and Ctrl+C cancel as Escape does.
  EXPECT_EQ(ask(DY_FOPEN, dir, path, "key f3"), 0);
  EXPECT_EQ(ask(DY_FOPEN, dir, path, "key c-c"), 0);
  EXPECT_EQ(path, "proposed");
}

TEST_F(FileBox, SaveTakesANewNameOnlyInAFolderThatExists) {
  std::string path;
  // A name in a folder that is not there is refused; one in sub/ is taken.
  ASSERT_EQ(ask(DY_FSAVE, dir, path, "type nowhere/n.txt\nkey enter\nkey f3"), 0);
  EXPECT_TRUE(path.empty());
  ASSERT_EQ(ask(DY_FSAVE, dir, path, "type sub/new.txt\nkey enter"), 1);
  EXPECT_EQ(path, dir + "/sub/new.txt");
  // A folder that is not there to start in: the working folder instead.
  path.clear();
  char cwd[4096];
  ASSERT_NE(getcwd(cwd, sizeof cwd), nullptr);
  ASSERT_EQ(ask(DY_FSAVE, dir + "/gone", path, "type n.txt\nkey enter"), 1);
  EXPECT_EQ(path, std::string(cwd) + "/n.txt");
}

TEST_F(FileBox, FolderBoxWalksFoldersOnlyAndTakesTheOneShownOrTyped) {
  std::string path;
  // The list holds ../ and sub/. In sub/ it holds ../ alone (no b.txt to
  // move down to), which goes back up; Enter takes the folder shown.
  ASSERT_EQ(ask(DY_FFOLDER, dir, path,
                "key uparrow\nkey downarrow\nkey space\nkey downarrow\nkey space\nkey enter"),
            1);
  EXPECT_EQ(path, dir);
  EXPECT_EQ(dy_lastfolder(), dir);
  // A folder typed is taken as it is, not walked into.
  path.clear();
  ASSERT_EQ(ask(DY_FFOLDER, dir, path, "type sub\nkey enter"), 1);
  EXPECT_EQ(path, dir + "/sub");
  // A file or a name that is not there is refused; Escape then cancels.
  path.clear();
  EXPECT_EQ(ask(DY_FFOLDER, dir, path, "type a.txt\nkey enter\nkey escape"), 0);
  EXPECT_EQ(ask(DY_FFOLDER, dir, path, "type gone\nkey enter\nkey escape"), 0);
  EXPECT_TRUE(path.empty());
}

TEST_F(FileBox, ModalEndsOnAListClickOnlyWhenAskedTo) {
  dy_item l = dy_text_item(DY_KSCL, 1, 0, "");
  l.lines = {"p", "q"};
  l.on = {0, 0};
  l.height = 2;
  l.width = 5;
  std::vector<dy_item> items = {l, dy_text_item(DY_KBUTTON, 1, 4, "OK")};
  dy_modal how;
  how.picks = true;
  rec->script("key downarrow\nkey space");
  EXPECT_EQ(dy_run_modal(items, "", how), DY_PICK);
  EXPECT_EQ(items[0].cursor, 1);
  // Without picks the click only selects, and Enter off a button is
  // nothing until panel keys make it the first button.
  rec->script("key space\nkey enter\nkey tab\nkey enter");
  EXPECT_EQ(dy_run_modal(items, "", dy_modal{}), 1);
  dy_modal panel;
  panel.panel_keys = true;
  rec->script("key enter");
  EXPECT_EQ(dy_run_modal(items, "", panel), 1);
}

TEST_F(FileBox, NoScreenNoBox) {
  dy_noscreen = true;
  std::string path = "kept";
  EXPECT_EQ(dy_filebox(DY_FOPEN, "Open", dir, path), -1);
  EXPECT_EQ(path, "kept");
  dy_noscreen = false;
}
