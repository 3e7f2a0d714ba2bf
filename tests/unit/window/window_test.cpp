// The window layer run for real on the offscreen platform: a page painted
// and checked cell by cell in the grabbed image, keys and the mouse injected
// through the toolkit and read back as the field manager's codes, the menus,
// the close box, resizing and fonts.
#include "tests/unit/window/win_start.h"
#include "fields/dialogs/dialogs.h"
#include <QAction>
#include <QApplication>
#include <QElapsedTimer>
#include <QFontDatabase>
#include <QPushButton>
#include <QTimer>
#include <QToolBar>
#include <array>
#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>
#include <unistd.h>

namespace {

constexpr int CW = 10, CH = 20;  // the cell of the font the tests ask for

using row = std::array<int32_t, 14>;
row fld(int id, int y, int x, int h, int w, int colour, int hilite, int type = 0) {
  return row{id, y, x, h, w, type, 1, colour, 0, hilite, 0, 0, 0, 0};
}

class WindowTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    win_start();
  }
  void SetUp() override {
    ASSERT_NE(qw_layer, nullptr);
    char prog[] = "xed";
    char *argv[] = {prog, nullptr};
    ASSERT_EQ(fsinit(1, argv, qw_layer), 1);
    qw_layer->show(1);
    settle();
    fsresize();
    drain();
  }
  void TearDown() override { fsend(); }

  // Lets the toolkit deliver what it has, for a few milliseconds.
  static void settle(int ms = 30) {
    QElapsedTimer t;
    t.start();
    while (t.elapsed() < ms) QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
  }
  static void drain() {
    while (fs_evpending()) {
      gdet_ev.head = (gdet_ev.head + 1) % (gdet_ev.cap ? gdet_ev.cap : 1);
      gdet_ev.count--;
    }
  }
  int define(const std::vector<row> &rows) {
    std::vector<int32_t> t;
    for (const row &r : rows) t.insert(t.end(), r.begin(), r.end());
    return asrfmt(int(rows.size()), 14, t.data());
  }
  // The events queued, oldest first, as code/released pairs.
  std::vector<fs_event> events() {
    std::vector<fs_event> out;
    for (int i = 0; i < gdet_ev.count; i++) out.push_back(gdet_ev.ev[(gdet_ev.head + i) % gdet_ev.cap]);
    return out;
  }
  void key(int qtkey, Qt::KeyboardModifiers m, const QString &text, quint32 vk = 0) {
    QKeyEvent p(QEvent::KeyPress, qtkey, m, 0, vk, 0, text);
    QKeyEvent r(QEvent::KeyRelease, qtkey, m, 0, vk, 0, text);
    QCoreApplication::sendEvent(qw_layer->grid_, &p);
    QCoreApplication::sendEvent(qw_layer->grid_, &r);
  }
  struct result {
    int code, value, modified;
  };
  // A read, past what the toolkit may say on its own meanwhile (focus).
  result read() {
    result r{};
    asftimeout(2000);
    do asread(&r.code, &r.value, &r.modified);
    while (r.code == 42 || r.code == 67 || r.code == 29);
    return r;
  }
  // A press and release of a mouse button in the middle of a cell.
  void click(int line, int col, Qt::MouseButton b, Qt::KeyboardModifiers m = Qt::NoModifier) {
    QPointF at((col - 0.5) * CW, (line - 0.5) * CH);
    QMouseEvent press(QEvent::MouseButtonPress, at, at, b, b, m);
    QMouseEvent rel(QEvent::MouseButtonRelease, at, at, b, Qt::NoButton, m);
    QCoreApplication::sendEvent(qw_layer->grid_, &press);
    QCoreApplication::sendEvent(qw_layer->grid_, &rel);
  }
  // Whether the cell has a pixel other than its background: a glyph.
  static bool inked(const QImage &img, int line, int col, QRgb bg) {
    for (int y = (line - 1) * CH + 1; y < line * CH - 1; y++)
      for (int x = (col - 1) * CW; x < col * CW; x++)
        if (img.pixel(x, y) != bg) return true;
    return false;
  }
};

TEST_F(WindowTest, GridComesFromTheClientAreaAndTheFont) {
  fs_metrics m;
  qw_layer->geometry(m);
  EXPECT_EQ(m.cell_w, CW);
  EXPECT_EQ(m.cell_h, CH);
  int lines, cols;
  fs_grid(&lines, &cols);
  EXPECT_EQ(cols, 40);
  EXPECT_EQ(lines, 10);
  // The status line and its rule lie under the grid, inside the client area.
  EXPECT_GE(m.client_h, (lines + 1) * CH);
  EXPECT_LT(m.client_h, (lines + 2) * CH);
}

TEST_F(WindowTest, PagePaintsCellByCellWithColoursAndReverse) {
  asfmap(2, 255, 0, 0);
  asfmap(4, 0, 255, 0);
  ASSERT_GE(define({fld(1, 2, 3, 1, 10, 2, 0), fld(2, 4, 1, 1, 6, 4, 2)}), 0) << as_lastmsg;
  ascput(1, 5, "AB  C");
  ascput(2, 3, "xyz");
  asrefresh();
  settle();
  QImage img = qw_layer->img_;
  const QRgb black = qRgb(0, 0, 0), red = qRgb(255, 0, 0), green = qRgb(0, 255, 0);
  // Plain field: black background, red glyphs where there are characters.
  EXPECT_EQ(img.pixel(2 * CW + 1, 1 * CH + 1), black);
  EXPECT_TRUE(inked(img, 2, 3, black));
  EXPECT_TRUE(inked(img, 2, 4, black));
  EXPECT_FALSE(inked(img, 2, 5, black));
  EXPECT_TRUE(inked(img, 2, 7, black));
  bool anyred = false;
  for (int y = CH; y < 2 * CH; y++)
    for (int x = 2 * CW; x < 3 * CW; x++) anyred = anyred || img.pixel(x, y) == red;
  EXPECT_TRUE(anyred);
  // Reverse field: the colour is the background, even where blank.
  EXPECT_EQ(img.pixel(5 * CW + 1, 3 * CH + 1), green);
  EXPECT_TRUE(inked(img, 4, 1, green));
  EXPECT_FALSE(inked(img, 4, 5, green));
  // Outside every field nothing is drawn.
  EXPECT_FALSE(inked(img, 7, 20, black));
}

TEST_F(WindowTest, UnchangedRefreshDrawsNothing) {
  ASSERT_GE(define({fld(1, 1, 1, 1, 10, 64, 0)}), 0);
  ascput(1, 3, "abc");
  asrefresh();
  // Paint over the image behind the manager's back: a refresh with no change
  // must leave it, since only differences reach the painter.
  qw_layer->img_.setPixel(0, 0, qRgb(1, 2, 3));
  asrefresh();
  EXPECT_EQ(qw_layer->img_.pixel(0, 0), qRgb(1, 2, 3));
  ascput(1, 3, "abd");
  asrefresh();
  EXPECT_EQ(qw_layer->img_.pixel(0, 0), qRgb(1, 2, 3));  // column 3 changed, not 1
  EXPECT_TRUE(inked(qw_layer->img_, 1, 3, qRgb(0, 0, 0)));
}

TEST_F(WindowTest, KeysBecomeCodesWithModifiersAndReleases) {
  key(Qt::Key_A, Qt::NoModifier, "a");
  key(Qt::Key_A, Qt::ControlModifier, "\x01");
  key(Qt::Key_F5, Qt::ShiftModifier, "");
  key(Qt::Key_Home, Qt::AltModifier, "");
  auto ev = events();
  ASSERT_EQ(ev.size(), 8u);
  EXPECT_EQ(ev[0].code, 'a');
  EXPECT_EQ(ev[0].released, 0);
  EXPECT_EQ(ev[1].released, 1);
  EXPECT_EQ(ev[2].code, 'a');
  EXPECT_TRUE(ev[2].modifiers & FSM_CTRL);
  EXPECT_EQ(ev[4].code, FSK_F0 + 5);
  EXPECT_TRUE(ev[4].modifiers & FSM_SHIFT);
  EXPECT_EQ(ev[6].code, FSK_HOME);
  EXPECT_TRUE(ev[6].modifiers & FSM_ALT);
  drain();
}

TEST_F(WindowTest, RightCtrlAloneIsNextLineAndLeftIsNothing) {
  key(Qt::Key_Control, Qt::NoModifier, "", QK_CTRL_R);
  key(Qt::Key_Control, Qt::NoModifier, "", 0xffe3);
  auto ev = events();
  ASSERT_EQ(ev.size(), 2u);
  EXPECT_EQ(ev[0].code, 10);
  EXPECT_EQ(ev[1].released, 1);
  drain();
  // Right Ctrl used as a modifier is no key of its own.
  QKeyEvent p(QEvent::KeyPress, Qt::Key_Control, Qt::NoModifier, 0, QK_CTRL_R, 0, "");
  QCoreApplication::sendEvent(qw_layer->grid_, &p);
  key(Qt::Key_B, Qt::ControlModifier, "\x02");
  QKeyEvent r(QEvent::KeyRelease, Qt::Key_Control, Qt::NoModifier, 0, QK_CTRL_R, 0, "");
  QCoreApplication::sendEvent(qw_layer->grid_, &r);
  ev = events();
  ASSERT_EQ(ev.size(), 2u);
  EXPECT_EQ(ev[0].code, 'b');
  drain();
}

TEST_F(WindowTest, KeysReachTheReadAsItsCodes) {
  ASSERT_GE(define({fld(1, 1, 1, 1, 20, 64, 0)}), 0);
  asfcur(1, 1, 1);
  key(Qt::Key_X, Qt::NoModifier, "x");
  key(Qt::Key_F3, Qt::NoModifier, "");
  result r = read();
  EXPECT_EQ(r.code, 1);   // a function key
  EXPECT_EQ(r.value, 3);  // F3
  char buf[2] = {};
  ascget(1, 1, buf);
  EXPECT_EQ(buf[0], 'x');  // typed before it, into the field
  key(Qt::Key_Return, Qt::NoModifier, "\r");
  EXPECT_EQ(read().code, 0);  // Enter
}

TEST_F(WindowTest, MouseButtonsWheelAndDragArrive) {
  QPointF at(4.5 * CW, 2.5 * CH);
  QMouseEvent press(QEvent::MouseButtonPress, at, at, Qt::RightButton, Qt::RightButton, Qt::ShiftModifier);
  QMouseEvent move(QEvent::MouseMove, at + QPointF(CW, 0), at, Qt::NoButton, Qt::RightButton, Qt::NoModifier);
  QMouseEvent rel(QEvent::MouseButtonRelease, at, at, Qt::RightButton, Qt::NoButton, Qt::NoModifier);
  QMouseEvent dbl(QEvent::MouseButtonDblClick, at, at, Qt::MiddleButton, Qt::MiddleButton, Qt::NoModifier);
  QWheelEvent wheel(at, at, QPoint(), QPoint(0, -120), Qt::NoButton, Qt::ControlModifier,
                    Qt::NoScrollPhase, false);
  for (QEvent *e : std::initializer_list<QEvent *>{&press, &move, &rel, &dbl, &wheel})
    QCoreApplication::sendEvent(qw_layer->grid_, e);
  auto ev = events();
  ASSERT_EQ(ev.size(), 5u);
  EXPECT_EQ(ev[0].code, FSK_RIGHT_B);
  EXPECT_EQ(ev[0].x, int(4.5 * CW));
  EXPECT_EQ(ev[0].y, int(2.5 * CH));
  EXPECT_TRUE(ev[0].modifiers & FSM_SHIFT);
  EXPECT_EQ(ev[1].code, FSK_DRAG);
  EXPECT_EQ(ev[2].code, FSK_RIGHT_B);
  EXPECT_EQ(ev[2].released, 1);
  EXPECT_EQ(ev[3].code, FSK_MIDDLE_B);  // a double click is a press
  EXPECT_EQ(ev[4].code, FSK_WHEELDOWN);
  EXPECT_TRUE(ev[4].modifiers & FSM_CTRL);
  drain();
  ASSERT_GE(define({fld(1, 1, 1, 1, 20, 64, 0)}), 0);
  QCoreApplication::sendEvent(qw_layer->grid_, &wheel);
  EXPECT_EQ(read().code, 671);
}

TEST_F(WindowTest, MenuChoiceComesBackWithItsCommand) {
  char path[] = "/tmp/xedmenuXXXXXX";
  int fd = mkstemp(path);
  ASSERT_GE(fd, 0);
  close(fd);
  std::ofstream(path) << "File MENU\n  \"Save it\" SAVE\n  Quit QUIT\nEND MENU\nTop TOP\n";
  std::vector<std::string> errors;
  auto m = fs_menuread(path, "", errors);
  unlink(path);
  ASSERT_TRUE(m);
  EXPECT_TRUE(errors.empty());
  fs_menuset(0, std::move(m));
  QList<QAction *> bar = qw_layer->win_->menuBar()->actions();
  ASSERT_EQ(bar.size(), 2);
  EXPECT_EQ(bar[0]->text(), "File");
  ASSERT_TRUE(bar[0]->menu());
  QList<QAction *> items = bar[0]->menu()->actions();
  ASSERT_EQ(items.size(), 2);
  EXPECT_EQ(items[0]->text(), "Save it");
  ASSERT_GE(define({fld(1, 1, 1, 1, 20, 64, 0)}), 0);
  items[1]->trigger();
  result r = read();
  EXPECT_EQ(r.code, 63);
  ASSERT_NE(fs_menucmd(r.value), nullptr);
  EXPECT_STREQ(fs_menucmd(r.value), "QUIT");
  fs_menuset(0, nullptr);
  EXPECT_FALSE(qw_layer->win_->menuBar()->isVisible());
}

TEST_F(WindowTest, FieldMenuChoiceWritesItsCommandIntoTheField) {
  ASSERT_GE(define({fld(1, 3, 1, 1, 20, 64, 0), fld(2, 5, 1, 1, 20, 64, 0)}), 0);
  EXPECT_EQ(asfmenu(99, 3, 1, nullptr, nullptr, 0), AS_ENOTFOUND);
  EXPECT_STREQ(as_lastmsg, "asfmenu : field 000099 does not exist");
  const char *titles[] = {"Top", "Bottom"}, *cmds[] = {"TOP", "BOTTOM"};
  ASSERT_EQ(asfmenu(1, 3, 2, titles, cmds, 1), 0);
  click(3, 6, Qt::RightButton);
  // The choice is made while the read waits, as the user would make it.
  QTimer::singleShot(50, [] {
    ASSERT_TRUE(qw_layer->fieldmenu_ && qw_layer->fieldmenu_->isVisible());
    QList<QAction *> items = qw_layer->fieldmenu_->actions();
    ASSERT_EQ(items.size(), 2);
    EXPECT_EQ(items[0]->text(), "Top");
    items[1]->trigger();
  });
  result r = read();
  EXPECT_EQ(r.code, 30);
  EXPECT_EQ(r.value, 2);  // items count from 1
  char buf[8] = {};
  ascget(1, 7, buf);
  EXPECT_STREQ(buf, "BOTTOM ");
  int id, line, col;
  asqcur(1, &id, &line, &col);
  EXPECT_EQ(id, 1);
  EXPECT_EQ(col, 1);  // on the field's first cell
  asqmou(0, &id, &line, &col);
  EXPECT_EQ(line, 3);
  EXPECT_EQ(col, 6);  // where the menu was asked for
  // Without the flag the read goes on: Enter then hands over the command.
  ASSERT_EQ(asfmenu(2, 3, 2, titles, cmds, 0), 0);
  click(5, 9, Qt::RightButton);
  QTimer::singleShot(50, [this] {
    ASSERT_TRUE(qw_layer->fieldmenu_);
    qw_layer->fieldmenu_->actions()[0]->trigger();
    key(Qt::Key_Return, Qt::NoModifier, "\r");
  });
  r = read();
  EXPECT_EQ(r.code, 0);
  EXPECT_EQ(r.modified, 1);
  ascget(2, 4, buf);
  EXPECT_EQ(std::string(buf, 4), "TOP ");
  // Another button, or a menu taken away, opens nothing: the press is the caller's.
  qw_layer->fieldmenu_->hide();
  click(5, 9, Qt::MiddleButton);
  r = read();
  EXPECT_EQ(r.code, 20);
  EXPECT_EQ(r.value, 2);
  EXPECT_FALSE(qw_layer->fieldmenu_->isVisible());
  ASSERT_EQ(asfmenu(2, 3, 0, nullptr, nullptr, 0), 0);
  click(5, 9, Qt::RightButton);
  EXPECT_EQ(read().code, 20);
  EXPECT_FALSE(qw_layer->fieldmenu_->isVisible());
}

TEST_F(WindowTest, PopUpOpensOnMarkedFieldsWhereButton3PlacesTheCursor) {
  auto m = std::make_unique<fs_menu>();
  m->items.emplace_back();
  m->items[0].title = "Top";
  m->items[0].command = "TOP";
  fs_menuset(1, std::move(m));
  ASSERT_TRUE(qw_layer->popup_);
  asfmousemode("MOTIF");
  ASSERT_GE(define({fld(1, 2, 1, 1, 20, 64, 0), fld(2, 4, 1, 1, 20, 64, 0)}), 0);
  asfmgd(1, 1);
  // Not marked: the button places the cursor and no menu opens.
  click(4, 5, Qt::RightButton);
  key(Qt::Key_Return, Qt::NoModifier, "\r");
  EXPECT_EQ(read().code, 0);
  EXPECT_FALSE(qw_layer->popup_->isVisible());
  int id, line, col;
  asqcur(0, &id, &line, &col);
  EXPECT_EQ(line, 4);
  EXPECT_EQ(col, 5);
  // Marked: the same button opens the page's menu, and its choice comes back.
  click(2, 5, Qt::RightButton);
  QTimer::singleShot(50, [] {
    ASSERT_TRUE(qw_layer->popup_->isVisible());
    qw_layer->popup_->actions()[0]->trigger();
    qw_layer->popup_->hide();
  });
  result r = read();
  EXPECT_EQ(r.code, 31);
  ASSERT_NE(fs_menucmd(r.value), nullptr);
  EXPECT_STREQ(fs_menucmd(r.value), "TOP");
  // Alt with the button asks for it anywhere.
  click(4, 5, Qt::RightButton, Qt::AltModifier);
  key(Qt::Key_Return, Qt::NoModifier, "\r");
  read();
  EXPECT_TRUE(qw_layer->popup_->isVisible());
  qw_layer->popup_->hide();
  // A page that takes every click itself (a list's or a box's read) gets
  // the press, even on the marked field and with Alt.
  asfclickpos(0);
  for (auto mods : {Qt::NoModifier, Qt::AltModifier}) {
    click(2, 5, Qt::RightButton, mods);
    EXPECT_EQ(read().code, 20);
    EXPECT_FALSE(qw_layer->popup_->isVisible());
  }
  asfmousemode("WINDOWS");
  click(4, 5, Qt::RightButton);
  EXPECT_EQ(read().code, 20);
  EXPECT_FALSE(qw_layer->popup_->isVisible());
  asfclickpos(1);
  asfmousemode("WINDOWS");
  fs_menuset(1, nullptr);
  drain();
}

TEST_F(WindowTest, ToolBarPicturesComeFromTheShippedFiles) {
  ASSERT_EQ(qw_layer->toolbar(1), 1);
  const std::string dir = XED_ICONS;
  const char *files[] = {"quit", "new",   "open",  "save",   "file",  "cut",
                         "copy", "paste", "overlay", "upper", "lower", "lshift",
                         "rshift", "print", "undo", "redo",  "find",  "findup"};
  qw_layer->icondir_ = dir;
  qw_layer->toolicons();
  QList<QAction *> acts = qw_layer->tb_->actions();
  ASSERT_EQ(acts.size(), 18);
  QSize size = qw_layer->tb_->iconSize();
  auto shown = [&](int i) {
    return acts[i]->icon().pixmap(size).toImage().convertToFormat(QImage::Format_ARGB32);
  };
  for (int i = 0; i < 18; i++) {
    QImage want(QString::fromStdString(dir + files[i] + ".png"));
    ASSERT_FALSE(want.isNull()) << files[i];
    want = want.scaled(size, Qt::IgnoreAspectRatio, Qt::FastTransformation)
               .convertToFormat(QImage::Format_ARGB32);
    EXPECT_EQ(shown(i), want) << files[i];
  }
  // Files that are not there: a picture is drawn in their place.
  QImage fromfile = shown(0);
  qw_layer->icondir_ = "/nonexistent/";
  qw_layer->toolicons();
  QImage drawn = shown(0);
  EXPECT_EQ(drawn.size(), size);
  EXPECT_NE(drawn, fromfile);
  bool inked = false;
  for (int y = 0; y < drawn.height(); y++)
    for (int x = 0; x < drawn.width(); x++) inked = inked || qAlpha(drawn.pixel(x, y)) != 0;
  EXPECT_TRUE(inked);
  qw_layer->icondir_.clear();
  qw_layer->toolbar(0);
  settle();
  drain();
}

TEST_F(WindowTest, ToolBarButtonsAndScrollBarReachTheRead) {
  int lines, cols;
  fs_grid(&lines, &cols);
  ASSERT_EQ(qw_layer->toolbar(1), 1);
  settle();
  int l2, c2;
  fs_metrics m;
  qw_layer->geometry(m);
  EXPECT_EQ(m.client_h / CH - 1, lines);  // the window grew instead of the grid
  QList<QAction *> acts = qw_layer->tb_->actions();
  ASSERT_EQ(acts.size(), 18);
  EXPECT_EQ(acts[0]->toolTip(), "Quit");
  EXPECT_EQ(acts[17]->toolTip(), "Find UP");
  ASSERT_GE(define({fld(1, 1, 1, 1, 20, 64, 0)}), 0);
  drain();
  acts[16]->trigger();
  result r = read();
  EXPECT_EQ(r.code, 64);
  EXPECT_EQ(r.value, 16);
  qw_layer->scrollbar(1000, 10, 20);
  qw_layer->sb_->triggerAction(QAbstractSlider::SliderPageStepAdd);
  r = read();
  EXPECT_EQ(r.code, 40);
  EXPECT_EQ(r.value, 30);
  qw_layer->toolbar(0);
  fs_grid(&l2, &c2);
  EXPECT_EQ(l2, lines);
}

TEST_F(WindowTest, CloseBoxAsksAndCancelKeepsTheWindow) {
  ASSERT_GE(define({fld(1, 1, 1, 1, 20, 64, 0)}), 0);
  qw_layer->win_->close();
  settle();
  auto buttons = qw_layer->win_->findChildren<QPushButton *>();
  QPushButton *cont = nullptr, *cancel = nullptr;
  for (QPushButton *b : buttons) (b->text() == "Continue" ? cont : cancel) = b;
  ASSERT_TRUE(cont && cancel);
  EXPECT_TRUE(cont->isVisible());
  cancel->click();
  key(Qt::Key_F2, Qt::NoModifier, "");
  EXPECT_EQ(read().code, 1);  // still reading: not gone
}

TEST_F(WindowTest, ResizeByAFractionSnapsToWholeCells) {
  ASSERT_GE(define({fld(1, 1, 1, 1, 20, 64, 0)}), 0);
  QSize s = qw_layer->win_->size();
  qw_layer->win_->resize(s.width() + 3 * CW + 4, s.height() + CH + 7);
  settle(150);
  QSize g = qw_layer->grid_->size();
  EXPECT_EQ(g.width() % CW, 0);
  EXPECT_EQ((g.height() - 2) % CH, 0);
  EXPECT_EQ(read().code, 25);
  fsresize();
  int lines, cols;
  fs_grid(&lines, &cols);
  EXPECT_EQ(cols, 43);
  EXPECT_EQ(lines, 11);
  qw_layer->size(10, 40);
  settle();
  drain();
}

TEST_F(WindowTest, UnknownFontsAreRefusedAndTheGridKeepsItsSize) {
  EXPECT_EQ(asffont("No Such Face At All%*%12%24"), 1);
  EXPECT_NE(std::string(as_lastmsg).find("Invalid font"), std::string::npos);
  fs_metrics m;
  qw_layer->geometry(m);
  EXPECT_EQ(m.cell_w, CW);
  EXPECT_EQ(asffont("%*%12%24"), 0);
  settle();
  qw_layer->geometry(m);
  EXPECT_EQ(m.cell_w, 12);
  EXPECT_EQ(m.client_w / 12, 40);
  EXPECT_EQ(m.client_h / 24 - 1, 10);
  EXPECT_EQ(asffont("Courier New%*%10%20"), 0);  // a stand-in name
  EXPECT_EQ(asffont("No Such Face At All%*%12%24"), 1);
  EXPECT_EQ(qw_layer->font_name(), "Courier New%*%10%20") << "what Query FONt shows: the font in use";
  settle();
  drain();
  // The dialog font asks the window which faces it has.
  std::string before = dy_font();
  EXPECT_EQ(asffont_dy("No Such Face At All%*%8%16"), 1);
  EXPECT_STREQ(as_lastmsg, "asffont_dy : invalid font No Such Face At All%*%8%16");
  EXPECT_EQ(dy_font(), before);
  EXPECT_EQ(asffont_dy("Courier New%*%8%16"), 0);
  EXPECT_EQ(dy_font(), "Courier New%*%8%16");
  asffont_dy(before.c_str());
}

// The font box's families: fixed-pitch ones only, and each is a font the
// window takes.
TEST_F(WindowTest, FontBoxFamiliesAreFixedPitchAndTaken) {
  std::vector<std::string> families;
  ASSERT_TRUE(qw_layer->font_families(families));
  for (const std::string &f : families)
    EXPECT_TRUE(QFontDatabase::isFixedPitch(QString::fromStdString(f))) << f;
  for (size_t i = 0; i < families.size() && i < 3; i++)
    EXPECT_EQ(asffont((families[i] + "%Regular%10%20").c_str()), 0) << families[i];
  settle();
  drain();
}

}  // namespace

// Pages of a PDF the toolkit wrote: its page objects, not the page tree.
static int pdf_pages(const std::string &pdf) {
  int n = 0;
  for (size_t at = 0; (at = pdf.find("/Type /Page", at)) != std::string::npos; at += 11)
    if (pdf.compare(at, 12, "/Type /Pages") != 0) n++;
  return n;
}

TEST_F(WindowTest, PrintsThePageAsAnImageAndTextWithPageBreaks) {
  asfmap(2, 255, 0, 0);
  ASSERT_GE(define({fld(1, 2, 3, 1, 10, 2, 0)}), 0) << as_lastmsg;
  ascput(1, 5, "AB  C");
  asrefresh();
  settle();
  std::string shot = qw_layer->pdf(nullptr, "screen");
  ASSERT_EQ(shot.compare(0, 5, "%PDF-"), 0);
  EXPECT_NE(shot.find("/Subtype /Image"), std::string::npos);
  EXPECT_EQ(pdf_pages(shot), 1);
  std::vector<std::string> one = {"first", "second"};
  std::vector<std::string> two = {"first", "\fsecond"};
  std::string a = qw_layer->pdf(&one, "doc"), b = qw_layer->pdf(&two, "doc");
  ASSERT_EQ(a.compare(0, 5, "%PDF-"), 0);
  EXPECT_EQ(pdf_pages(a), 1);
  EXPECT_EQ(pdf_pages(b), 2);
  // A long text runs on over pages of its own.
  std::vector<std::string> many(200, "a line of the file");
  EXPECT_GE(pdf_pages(qw_layer->pdf(&many, "doc")), 2);
}
