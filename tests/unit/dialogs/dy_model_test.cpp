// The dialog box model: event texts and their queue, the double-click
// timing, callbacks that destroy boxes, placement on a small screen, the
// field page that a box becomes without a window, and alerts.
#include "fields/dialogs/dialogs.h"
#include "fields/dialogs/dy_int.h"
#include "tests/unit/fields/fs_fixture.h"

namespace {

std::vector<std::string> heard;  // "macro|event" of each callback run
int destroy_on_call = 0;         // a handle the callback destroys, 0 none

int hear(const std::string &macro, const std::string &event) {
  heard.push_back(macro + "|" + event);
  if (destroy_on_call) dy_destroy(destroy_on_call);
  return macro == "broken" ? -1 : 0;
}

dy_item list(double x, double y, std::vector<std::string> lines, bool multiple) {
  dy_item it = dy_text_item(DY_KSCL, x, y, "List");
  it.width = 10;
  it.height = 2;
  it.lines = std::move(lines);
  it.on.assign(it.lines.size(), 0);
  it.multiple = multiple;
  return it;
}

// A box of two buttons and a list, with a callback.
int make_box(const std::string &macro, int grab = DY_NOGRAB) {
  dy_opts o;
  o.grab = grab;
  int h = dy_make({dy_text_item(DY_KBUTTON, 1, 0, "OK"), dy_text_item(DY_KBUTTON, 10, 0, "Cancel"),
                   list(1, 2, {"a", "b", "c"}, true)},
                  o);
  dy_attach(h, macro, "test");
  return h;
}

// Every box goes, with what it had pending, and the callback with them.
void forget_boxes() {
  dy_destroy_all();
  dy_deliver();
  dy_callhook = nullptr;
}

void listen() {
  heard.clear();
  destroy_on_call = 0;
  dy_callhook = hear;
}

class Events : public ::testing::Test {
 protected:
  void SetUp() override { listen(); }
  void TearDown() override { forget_boxes(); }
};

}  // namespace

TEST_F(Events, TextsReachTheCallbackInOrder) {
  int h = make_box("cb");
  dy_button(h, 2);
  dy_choice(h, 1, 3);
  dy_key(h, 'E', 0);
  dy_key(h, 'F', 5);
  dy_key(h, '^', 'X');
  dy_key(h, 'f', 0);
  EXPECT_EQ(dy_pending(), 6);
  EXPECT_EQ(dy_deliver(), 6);
  std::string n = std::to_string(h);
  EXPECT_EQ(heard, (std::vector<std::string>{"cb| " + n + " B2", "cb| " + n + " MENU1 3",
                                              "cb| " + n + " return", "cb| " + n + " F5",
                                              "cb| " + n + " ^X", "cb| " + n + " focus"}));
  EXPECT_EQ(dy_pending(), 0);
}

TEST_F(Events, NobodyListeningHearsNothing) {
  int quiet = make_box("");
  int display = make_box("cb", DY_DISPLAY);
  dy_button(quiet, 1);
  dy_button(display, 1);
  dy_event(9999, " 9999 B1");  // no such box
  EXPECT_EQ(dy_pending(), 0);
}

TEST_F(Events, SecondClickWithin300MillisecondsIsDouble) {
  int h = make_box("cb");
  dy_listclick(h, 1, 2, 1000);
  dy_listclick(h, 1, 2, 1300);  // 300 ms: double
  dy_listclick(h, 1, 2, 1400);  // after a double, a plain click again
  dy_listclick(h, 1, 2, 1701);  // 301 ms: plain
  dy_listclick(h, 1, 3, 1750);  // another line: plain
  dy_deliver();
  std::string n = std::to_string(h);
  EXPECT_EQ(heard, (std::vector<std::string>{"cb| " + n + " SC1 2", "cb| " + n + " DSC1 2",
                                              "cb| " + n + " SC1 2", "cb| " + n + " SC1 2",
                                              "cb| " + n + " SC1 3"}));
}

TEST_F(Events, CallbackDestroyingItsBoxDropsItsOtherEvents) {
  int h = make_box("cb");
  int other = make_box("cb2");
  dy_button(h, 1);
  dy_button(h, 2);
  dy_button(other, 1);
  destroy_on_call = h;
  EXPECT_EQ(dy_deliver(), 2);
  ASSERT_EQ(heard.size(), 2u);
  EXPECT_EQ(heard[1], "cb2| " + std::to_string(other) + " B1");
  EXPECT_EQ(dy_qmap(h), -1);
  EXPECT_STREQ(as_lastmsg, ("dy_qmap: invalid \"" + std::to_string(h) + "\" handle").c_str());
  // Handles are never given twice.
  EXPECT_GT(make_box("cb"), other);
}

TEST_F(Events, FailingCallbackTakesItsBoxOffTheScreen) {
  int h = make_box("broken");
  int geo[4];
  ASSERT_EQ(dy_map(h, geo), 0);
  dy_button(h, 1);
  dy_deliver();
  EXPECT_EQ(dy_qmap(h), 0);
  EXPECT_STREQ(as_lastmsg, "dy_dispatch: unable to run the \"broken\" macro");
}

TEST_F(Events, ItemsOfAKindAreNumberedApart) {
  int h = make_box("cb");
  std::vector<int> sel;
  EXPECT_EQ(bu_dy_ascl(h, 1, "d", 0, 1), 0);
  EXPECT_EQ(bu_dy_ascl(h, 1, "first", 1, 1), 0);
  ASSERT_EQ(dy_qscl(h, 1, sel), 0);
  EXPECT_EQ(sel, (std::vector<int>{1, 5}));  // Multiple keeps both
  EXPECT_EQ(bu_dy_dscl(h, 1, 2, 10), 0);     // a count past the end stops there
  ASSERT_EQ(dy_qscl(h, 1, sel), 0);
  EXPECT_EQ(sel, (std::vector<int>{1}));
  EXPECT_EQ(bu_dy_rscl(h, 1, 2, "x"), -1);
  EXPECT_STREQ(as_lastmsg, "bu_dy_rscl: invalid \"2\" line number");
  EXPECT_EQ(bu_dy_sscl(h, 2, {"z"}, 0), -1);
  EXPECT_STREQ(as_lastmsg, "bu_dy_sscl: invalid \"2\" scrolled list number");
  // Lines set with a pattern are sifted, the first kept first when asked.
  EXPECT_EQ(bu_dy_sscl(h, 1, {"Title", "b", "c", "a"}, 1, "c;a", true), 0);
  EXPECT_EQ(dy_find(h)->items[2].lines, (std::vector<std::string>{"Title", "a", "c"}));
  EXPECT_EQ(dy_Cbutton(h, 2, std::array<int, 6>{1, 2, 3, 4, 5, 6}.data()), 0);
  EXPECT_EQ(dy_Cbutton(h, 3, std::array<int, 6>{}.data()), -1);
  EXPECT_STREQ(as_lastmsg, "dy_Cbutton: invalid \"3\" button number");
}

// ---- the page of a box on a small screen ------------------------------------

class Page : public FieldsTest {
 protected:
  void SetUp() override {
    start(12, 40);
    listen();
  }
  void TearDown() override {
    forget_boxes();
    as_readhook = nullptr;
    FieldsTest::TearDown();
  }
};

TEST_F(Page, WideBoxIsCutToTheScreenAndCentred) {
  dy_opts o;
  o.centre = 1;
  int h = dy_make({dy_text_item(DY_KLABEL, 1, 0, std::string(70, 'w'))}, o);
  int geo[4];
  ASSERT_EQ(dy_map(h, geo), 0);
  EXPECT_EQ(geo[2], 40 * 8);  // cut to the grid's width
  EXPECT_EQ(geo[0], 0);
  rec->script("key escape");
  EXPECT_EQ(dy_page_read(), 1);
  EXPECT_EQ(dy_qmap(h), 0);  // Escape with no Cancel button takes it away
}

TEST_F(Page, KeysFillTheItemsAndReport) {
  dy_item in = dy_text_item(DY_KINPUT, 1, 0, "ab");
  in.width = 6;
  dy_item tg = dy_text_item(DY_KTG, 1, 1, "");
  tg.lines = {"one", "two"};
  tg.tx = {1, 10};
  tg.ty = {1, 1};
  tg.on = {1, 0};
  tg.exclusive = true;
  dy_opts o;
  int h = dy_make({in, tg, list(1, 2, {"p", "q", "r"}, false), dy_text_item(DY_KBUTTON, 1, 6, "Go")}, o);
  dy_attach(h, "cb", "test");
  int geo[4];
  dy_map(h, geo);
  // Typing at the end of the input, Space on the second toggle of an
  // exclusive group, Down and Space in the list, then the button.
  rec->script("key end\ntype Z\nkey tab\nkey tab\nkey space\nkey tab\nkey downarrow\nkey space");
  EXPECT_EQ(dy_page_read(), 1);  // the list's click ends the box's read
  std::string text;
  std::vector<int> on, sel;
  dy_qtext(h, 1, text);
  dy_qtg(h, 1, on);
  dy_qscl(h, 1, sel);
  EXPECT_EQ(text, "abZ");
  EXPECT_EQ(on, (std::vector<int>{0, 1}));
  EXPECT_EQ(sel, (std::vector<int>{2}));
  dy_deliver();
  rec->script("key tab\nkey enter");  // the focus stayed on the list
  EXPECT_EQ(dy_page_read(), 1);
  dy_deliver();
  std::string n = std::to_string(h);
  EXPECT_EQ(heard, (std::vector<std::string>{"cb| " + n + " SC1 2", "cb| " + n + " B1"}));
  // Back on the page it was read over.
  EXPECT_EQ(fs_curpage(), 0u);
}

TEST_F(Page, AlertGivesTheButtonPressed) {
  rec->script("key tab\nkey enter");
  EXPECT_EQ(asf_alert(1, {"Really Quit?"}), 2);
  rec->script("key escape");
  EXPECT_EQ(asf_alert(3, {"Really Quit?"}), 1);  // Escape is Cancel, the first of kind 3
  rec->script("key escape");
  EXPECT_EQ(asf_alert(2, {"Only Continue"}), 0);  // no Cancel: closed
  EXPECT_EQ(asf_alert(6, {"x"}), -1);
  EXPECT_EQ(asf_alert(1, {}), -1);
}

TEST_F(Page, MarkedLetterPressesItsButtonAndFocusCanStartAnywhere) {
  std::vector<dy_item> items = {dy_text_item(DY_KBUTTON, 0, 0, "&Run"),
                                dy_text_item(DY_KBUTTON, 0, 1, "&Edit"),
                                dy_text_item(DY_KBUTTON, 0, 2, "Fish && &Chips")};
  rec->script("key E");  // the letter in either case
  EXPECT_EQ(dy_run_modal(items, ""), 2);
  rec->script("key c");  // `&&` is no mark: the letter after the single `&` is
  EXPECT_EQ(dy_run_modal(items, ""), 3);
  rec->script("key x\nkey escape");  // a letter no button has does nothing
  EXPECT_EQ(dy_run_modal(items, ""), 0);
  rec->script("key enter");
  EXPECT_EQ(dy_run_modal(items, "", dy_modal{1}), 2);
  rec->script("key downarrow\nkey enter");
  EXPECT_EQ(dy_run_modal(items, "", dy_modal{7}), 2);  // out of range: the first button
  // In an input line a letter is typed, not a button's.
  dy_item in = dy_text_item(DY_KINPUT, 0, 0, "");
  in.width = 8;
  std::vector<dy_item> form = {in, dy_text_item(DY_KBUTTON, 0, 2, "&Run")};
  rec->script("type r\nkey tab\nkey enter");
  EXPECT_EQ(dy_run_modal(form, ""), 1);
  EXPECT_EQ(form[0].text, "r");
}

TEST_F(Page, MenuStandsAtTheCellItIsAskedAt) {
  // Its frame's corner on line 3, column 5: the first row on line 4 from
  // column 7 on. Centred on this grid nothing of it would be there.
  rec->script("click 4 8");
  EXPECT_EQ(dy_menu({"One", "Two"}, "", 1, 3, 5), 1);
  rec->script("key enter");
  EXPECT_EQ(dy_menu({"One", "Two"}, "", 1, 3, 5), 2);  // Enter on the row focused first
  rec->script("key escape");
  EXPECT_EQ(dy_menu({"One", "Two"}, "", 0), 0);
}

TEST_F(Page, OnlyADoubleClickOnALineEndsAWaitThatAsksForOne) {
  // A list at the box's corner cell: its lines on lines 3 and 4 from column 4.
  std::vector<dy_item> items = {list(1, 0, {"a", "b", "c"}, false), dy_text_item(DY_KBUTTON, 1, 4, "OK")};
  dy_modal how;
  how.picks2 = true;
  how.line = how.col = 1;
  rec->script("click 3 5\ndclick 4 5");
  EXPECT_EQ(dy_run_modal(items, "", how), DY_PICK2);
  EXPECT_EQ(items[0].cursor, 1);
  EXPECT_EQ(items[0].on, (std::vector<int>{0, 1, 0}));
  how.picks2 = false;
  how.picks = true;
  rec->script("click 3 5");
  EXPECT_EQ(dy_run_modal(items, "", how), DY_PICK);  // one click is enough for the file box
}

TEST_F(Page, AskGivesTheTextTyped) {
  std::string text = "/tmp";
  rec->script("key end\ntype /x\nkey escape");
  EXPECT_EQ(dy_ask("Select a Folder", "Folder:", text), 0);  // Cancel keeps the proposal
  EXPECT_EQ(text, "/tmp");
  rec->script("key end\ntype /y\nkey tab\nkey enter");
  EXPECT_EQ(dy_ask("Select a Folder", "Folder:", text), 1);
  EXPECT_EQ(text, "/tmp/y");
}

// A screen too small for any frame shows nothing of the box, and Escape
// still takes it away.
class TinyPage : public Page {
 protected:
  void SetUp() override {
    start(2, 3);
    listen();
  }
};

TEST_F(TinyPage, BoxWithNoRoomIsNotDrawnButStillCloses) {
  int h = dy_make({dy_text_item(DY_KLABEL, 1, 0, "too big")}, dy_opts{});
  int geo[4];
  ASSERT_EQ(dy_map(h, geo), 0);
  rec->script("key escape");
  EXPECT_EQ(dy_page_read(), 1);
  EXPECT_EQ(dy_qmap(h), 0);
}
