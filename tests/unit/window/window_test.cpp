// The window layer run for real on the offscreen platform: a page painted
// and checked cell by cell in the grabbed image, keys and the mouse injected
// through the toolkit and read back as the field manager's codes, the menus,
// the close box, resizing and fonts.
#include "fields/dialogs/dialogs.h"
#include "fields/plat_qt/qt_window.h"
#include <QAction>
#include <QApplication>
#include <QElapsedTimer>
#include <QFontDatabase>
#include <QPushButton>
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
    setenv("QT_QPA_PLATFORM", "offscreen", 0);
    static char dir[] = "/tmp/xedwinXXXXXX";
    if (!getenv("XED_WINTEST_DIR")) setenv("XED_WINTEST_DIR", mkdtemp(dir), 1);
    setenv("XDG_CONFIG_HOME", getenv("XED_WINTEST_DIR"), 1);
    if (qw_layer) return;
    const char *args[] = {"xed", "-font", "%*%10%20", "-Ww", "40", "-Wh", "10", "-noauto", nullptr};
    std::string err;
    fs_plat_qt(8, const_cast<char **>(args), nullptr, err);
    ASSERT_NE(qw_layer, nullptr) << err;
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

TEST_F(WindowTest, UnknownFontIsRefusedAndTheGridKeepsItsSize) {
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
  settle();
  drain();
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

// A dialog box in the window: the keys the toolkit gives reach its items
// and its button, and its events reach the callback.
std::vector<std::string> *dialog_heard = nullptr;  // the callbacks run, macro and event

TEST_F(WindowTest, DialogBoxTakesTheWindowsKeys) {
  dy_item in = dy_text_item(DY_KINPUT, 1, 0, "ab");
  in.width = 8;
  int h = dy_make({in, dy_text_item(DY_KBUTTON, 1, 2, "OK")}, dy_opts{});
  std::vector<std::string> heard;
  dialog_heard = &heard;
  dy_callhook = [](const std::string &m, const std::string &e) {
    dialog_heard->push_back(m + e);
    return 0;
  };
  dy_attach(h, "cb", "test");
  int geo[4];
  ASSERT_EQ(dy_map(h, geo), 0);
  EXPECT_EQ(geo[2], (1 + 8 + 3) * CW);  // the input from column 1, a blank and the frames
  key(Qt::Key_End, Qt::NoModifier, "");
  key(Qt::Key_Z, Qt::NoModifier, "Z");
  key(Qt::Key_Tab, Qt::NoModifier, "\t");
  key(Qt::Key_Return, Qt::NoModifier, "\r");
  ASSERT_EQ(dy_page_read(), 1);
  std::string text;
  ASSERT_EQ(dy_qtext(h, 1, text), 0);
  EXPECT_EQ(text, "abZ");
  dy_deliver();
  EXPECT_EQ(heard, std::vector<std::string>{"cb " + std::to_string(h) + " B1"});
  EXPECT_EQ(fs_curpage(), 0u);  // back on the page under the box
  dy_destroy(h);
  dy_callhook = nullptr;
  as_readhook = nullptr;
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
