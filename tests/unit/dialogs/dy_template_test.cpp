// A box as a dialog template: the header's style by title and frame, the
// controls each kind of item becomes, the words as laid out (alignment, text
// in 16-bit units), the dump's text, and the dump file that never follows a
// link.
#include "fields/dialogs/dialogs.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <unistd.h>

namespace {

namespace fsys = std::filesystem;

dy_item toggles() {
  dy_item it = dy_text_item(DY_KTG, 1, 3, "Mode");
  it.lines = {"fast", "safe"};
  it.tx = {2, 10};
  it.ty = {4, 4};
  it.on = {1, 0};
  it.exclusive = true;
  return it;
}

dy_item list() {
  dy_item it = dy_text_item(DY_KSCL, 1, 6, "Files");
  it.width = 12;
  it.height = 3;
  it.lines = {"a", "b"};
  it.on = {0, 0};
  it.multiple = true;
  return it;
}

// A box of a label, a button, two toggles and a list, at (3, 2).
dy_box *make_box(const std::string &title, int framed) {
  dy_opts o;
  o.x = 3;
  o.y = 2;
  o.title = title;
  o.framed = framed;
  int h = dy_make({dy_text_item(DY_KLABEL, 1, 1, "Name:"), dy_text_item(DY_KBUTTON, 8, 1, "OK"), toggles(), list()},
                  o);
  return dy_get("test", h);
}

class Template : public ::testing::Test {
 protected:
  void TearDown() override { dy_destroy_all(); }
};

TEST_F(Template, HeaderStyleSizeAndControls) {
  dy_box *b = make_box("", 0);
  ASSERT_NE(b, nullptr);
  dy_tpl t = dy_template(*b);
  EXPECT_EQ(t.style, 0x808000D1u);
  EXPECT_EQ(t.x, 12);
  EXPECT_EQ(t.y, 16);
  EXPECT_EQ(t.cx, b->cols * 4);
  EXPECT_EQ(t.cy, b->lines * 8);
  EXPECT_EQ(t.caption, " ");
  EXPECT_EQ(t.face, "Courier New");
  // label, button, the group's frame and its two toggles, the list's title and the list
  ASSERT_EQ(t.controls.size(), 7u);
  EXPECT_EQ(t.controls[0].cls, 0x82);
  EXPECT_EQ(t.controls[0].style, 0x50000000u);
  EXPECT_EQ(t.controls[0].cx, 5 * 4);
  EXPECT_EQ(t.controls[1].cls, 0x80);
  EXPECT_EQ(t.controls[1].x, 8 * 4);
  EXPECT_EQ(t.controls[3].style & 0xF, 9u);  // exclusive toggles are radio buttons
  EXPECT_EQ(t.controls[4].y, 4 * 8);
  EXPECT_EQ(t.controls[6].cls, 0x83);
  EXPECT_EQ(t.controls[6].style, 0x50200001u | 0x10000u | 0x8u);
  EXPECT_EQ(t.controls[6].cy, 3 * 8);  // the lines shown, below the title
  EXPECT_EQ(t.controls[6].id, t.controls[0].id + 3);  // the item's own number

  EXPECT_EQ(dy_template(*make_box("Pick", 0)).style, 0x80C800D1u);
  EXPECT_EQ(dy_template(*make_box("Pick", 1)).style, 0x80C800D1u | 0xCC0000u);
}

TEST_F(Template, WordsAreLaidOutAsTheRecordsSay) {
  dy_opts o;
  o.title = "\xC3\xA9t\xC3\xA9 \xF0\x9F\x98\x80";  // two accents and a character past 16 bits
  dy_box *b = dy_get("test", dy_make({dy_text_item(DY_KBUTTON, 0, 0, "Go")}, o));
  ASSERT_NE(b, nullptr);
  dy_tpl t = dy_template(*b);
  const std::vector<uint16_t> &w = t.words;
  ASSERT_GT(w.size(), 20u);
  EXPECT_EQ(w[0] | uint32_t(w[1]) << 16, t.style);
  EXPECT_EQ(w[4], 1);  // one control
  EXPECT_EQ(w[9], 0);  // no menu
  EXPECT_EQ(w[10], 0);  // standard class
  std::vector<uint16_t> caption(w.begin() + 11, w.begin() + 17);
  EXPECT_EQ(caption, (std::vector<uint16_t>{0xE9, 't', 0xE9, ' ', 0xD83D, 0xDE00}));
  EXPECT_EQ(w[17], 0);
  EXPECT_EQ(w[18], t.point);
  size_t at = 19 + std::string("Courier New").size() + 1;  // past the face and its end
  if (at % 2) at++;  // the control's record starts on 4 bytes
  EXPECT_EQ(w[at] | uint32_t(w[at + 1]) << 16, t.controls[0].style);
  EXPECT_EQ(w[at + 8], t.controls[0].id);
  EXPECT_EQ(w[at + 9], 0xFFFF);
  EXPECT_EQ(w[at + 10], 0x80);
  EXPECT_EQ(w[at + 11], 'G');
  EXPECT_EQ(w[at + 13], 0);  // the text's end
  EXPECT_EQ(w.size(), at + 15);  // and no creation data
}

TEST_F(Template, DumpTextAndItsFile) {
  dy_box *b = make_box("", 0);
  std::string d = dy_template_dump(dy_template(*b));
  EXPECT_EQ(d.rfind("***** DLGTEMPLATE *****\nlpdt->style = 0x808000D1\nlpdt->cdit  = 7\n"
                    "lpdt->x     = 12\nlpdt->y     = 16\n",
                    0),
            0u)
      << d;
  EXPECT_NE(d.find("***** DLGITEMTEMPLATE 7 *****\nlpdit->style = 0x50210009\n"), std::string::npos) << d;
  EXPECT_NE(d.find("text         = \"Name:\"\n"), std::string::npos);

  std::string dir = (fsys::temp_directory_path() / "dytpl.XXXXXX").string();
  ASSERT_NE(mkdtemp(dir.data()), nullptr);
  std::string dump = dir + "/dump", target = dir + "/target";
  setenv("XED_DIALOG_DUMP", dump.c_str(), 1);
  struct unset {
    ~unset() { unsetenv("XED_DIALOG_DUMP"); }
  } later;  // however the test ends
  make_box("", 0);
  make_box("", 0);
  std::stringstream got;
  got << std::ifstream(dump).rdbuf();
  EXPECT_EQ(got.str(), d + d);  // appended, once a box
  EXPECT_EQ(fsys::status(dump).permissions() & fsys::perms::all, fsys::perms::owner_read | fsys::perms::owner_write);

  // A link planted where the dump goes is not followed.
  fsys::remove(dump);
  std::ofstream(target) << "keep\n";
  fsys::create_symlink(target, dump);
  make_box("", 0);
  std::stringstream kept;
  kept << std::ifstream(target).rdbuf();
  EXPECT_EQ(kept.str(), "keep\n");
  fsys::remove_all(dir);
}

}  // namespace
