// Dialog boxes in the window, on the offscreen platform: a box of every kind
// of item shown as the toolkit's controls at its cells, the user's actions
// injected through the toolkit and read back through the getters and the
// callback's event texts, the setters seen on the live controls, modal
// questions answered while their read waits in the toolkit, and a box
// destroyed from inside one of its own handlers.
#include "fields/plat_qt/qt_dialog.h"
#include "tests/unit/window/win_start.h"
#include "platform/platform.h"
#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QMenu>
#include <QPointer>
#include <QScrollBar>
#include <QCheckBox>
#include <QComboBox>
#include <QElapsedTimer>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>
#include <QTimer>
#include <array>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <sys/stat.h>
#include <unistd.h>
#include <gtest/gtest.h>

namespace {

constexpr int CW = 8, CH = 16;  // the cell of the dialog font the tests ask for

std::vector<std::string> *heard = nullptr;  // the callbacks run: the event texts

// Items: label, input, multi-line input, a group of each rule, a choice,
// a list of each selection mode, then OK and Cancel.
enum { LABEL, INPUT, NOTES, STYLE, ALIGN, SIZE, FRUIT, PICK, OK, CANCEL };

std::vector<dy_item> every_item() {
  std::vector<dy_item> v;
  v.push_back(dy_text_item(DY_KLABEL, 1, 0, "Name:"));
  dy_item in = dy_text_item(DY_KINPUT, 7.5, 0, "first");
  in.width = 12;
  v.push_back(in);
  dy_item notes = dy_text_item(DY_KINPUT, 22, 0, "one\ntwo");
  notes.height = 3;
  v.push_back(notes);
  for (bool exclusive : {false, true}) {
    dy_item tg = dy_text_item(DY_KTG, 1, exclusive ? 4 : 2, exclusive ? "Align" : "Style");
    tg.lines = exclusive ? std::vector<std::string>{"Left", "Right"}
                         : std::vector<std::string>{"Bold", "Italic"};
    double line = exclusive ? 5 : 3;
    tg.tx = {2, 12};
    tg.ty = {line, line};
    tg.on = {0, 0};
    tg.exclusive = exclusive;
    v.push_back(tg);
  }
  dy_item ch = dy_text_item(DY_KCH, 1, 7, "Size:");
  ch.lines = {"small", "medium", "large"};
  v.push_back(ch);
  for (bool multiple : {true, false}) {
    dy_item l = dy_text_item(DY_KSCL, multiple ? 1 : 16, 9, multiple ? "Fruit" : "Pick");
    l.lines = {"pear", "apple", "fig", "plum", "kiwi"};
    l.on.assign(5, 0);
    l.width = 10;
    l.height = 3;
    l.multiple = multiple;
    v.push_back(l);
  }
  v.push_back(dy_text_item(DY_KBUTTON, 2, 14, "OK"));
  v.push_back(dy_text_item(DY_KBUTTON, 12, 14, "Cancel"));
  return v;
}

class DialogWindowTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    unsetenv("XED_DIALOG_PAGES");
    win_start();
  }
  void SetUp() override {
    ASSERT_NE(qw_layer, nullptr);
    ASSERT_EQ(dy_viewhook != nullptr, true) << "the window shows boxes as its own windows";
    char prog[] = "xed";
    char *argv[] = {prog, nullptr};
    ASSERT_EQ(fsinit(1, argv, qw_layer), 1);
    qw_layer->show(1);
    ASSERT_EQ(dy_setfont("Courier New%*%8%16"), 0);
    heard = &events;
    dy_callhook = [](const std::string &m, const std::string &e) {
      // Focus comes and goes as the platform likes: not what these tests watch.
      if (e.find("focus") == std::string::npos) heard->push_back(m + e);
      return 0;
    };
  }
  void TearDown() override {
    dy_destroy_all();
    dy_deliver();
    dy_callhook = nullptr;
    settle();
    fsend();
  }
  static void settle(int ms = 20) {
    QElapsedTimer t;
    t.start();
    while (t.elapsed() < ms) QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  }
  // A box of every item, with a callback, mapped.
  int show(int grab = DY_GRAB, int centre = 1) {
    dy_opts o;
    o.title = "Every item";
    o.grab = grab;
    o.centre = centre;
    o.x = centre ? 0 : 3;
    o.y = centre ? 0 : 2;
    int h = dy_make(every_item(), o);
    dy_attach(h, "cb", "test");
    EXPECT_EQ(dy_map(h, geo), 0);
    settle();
    box = qd_box(h);
    EXPECT_NE(box, nullptr);
    return h;
  }
  template <class W>
  W *at(int item) {
    return dynamic_cast<W *>(box->items[size_t(item)].main);
  }
  QAbstractButton *toggle(int item, int t) { return box->items[size_t(item)].toggles[size_t(t)]; }
  // The callback's texts so far, and none after.
  std::vector<std::string> take() {
    dy_deliver();
    std::vector<std::string> out;
    out.swap(events);
    return out;
  }
  std::string ev(int h, const char *what) { return "cb " + std::to_string(h) + " " + what; }
  void click_row(QListWidget *l, int row) {
    QTest::mouseClick(l->viewport(), Qt::LeftButton, {}, l->visualItemRect(l->item(row)).center());
  }

  std::vector<std::string> events;
  qdbox *box = nullptr;
  int geo[4] = {};  // what the last map told
};

TEST_F(DialogWindowTest, EveryItemIsAControlAtItsCells) {
  int h = show();
  ASSERT_TRUE(box && box->isVisible());
  EXPECT_EQ(box->windowTitle(), "Every item");
  EXPECT_EQ(box->cw, CW);
  EXPECT_EQ(box->ch, CH);
  dy_box *b = dy_get("test", h);
  EXPECT_EQ(box->size(), QSize(b->cols * CW, b->lines * CH));
  // The map told where the window is, from the page's corner, and its size.
  QRect frame = box->frameGeometry();
  EXPECT_EQ(QRect(geo[0], geo[1], geo[2], geo[3]),
            frame.translated(-qw_layer->grid_->mapToGlobal(QPoint(0, 0))));
  // One cell of margin, then the item's column and line in cells, halves too.
  auto corner = [](double x, double y) { return QPoint(int((x + 1) * CW + 0.5), int((y + 1) * CH + 0.5)); };
  ASSERT_NE(at<QLabel>(LABEL), nullptr);
  EXPECT_EQ(at<QLabel>(LABEL)->text(), "Name:");
  EXPECT_EQ(at<QLabel>(LABEL)->pos(), corner(1, 0));
  ASSERT_NE(at<QLineEdit>(INPUT), nullptr);
  EXPECT_EQ(at<QLineEdit>(INPUT)->text(), "first");
  EXPECT_EQ(at<QLineEdit>(INPUT)->geometry(), QRect(corner(7.5, 0), QSize(12 * CW, CH)));
  ASSERT_NE(at<QPlainTextEdit>(NOTES), nullptr);
  EXPECT_EQ(at<QPlainTextEdit>(NOTES)->toPlainText(), "one\ntwo");
  EXPECT_EQ(at<QPlainTextEdit>(NOTES)->geometry(), QRect(corner(22, 0), QSize(DY_MULTI_COLS * CW, 3 * CH)));
  ASSERT_NE(dynamic_cast<QCheckBox *>(toggle(STYLE, 1)), nullptr);
  EXPECT_EQ(toggle(STYLE, 1)->text(), "Italic");
  EXPECT_EQ(toggle(STYLE, 1)->pos(), corner(12, 3));
  EXPECT_EQ(box->items[STYLE].title->pos(), corner(1, 2));
  ASSERT_NE(dynamic_cast<QRadioButton *>(toggle(ALIGN, 0)), nullptr);
  ASSERT_NE(at<QComboBox>(SIZE), nullptr);
  EXPECT_EQ(at<QComboBox>(SIZE)->count(), 3);
  EXPECT_EQ(at<QComboBox>(SIZE)->currentText(), "small");
  EXPECT_EQ(at<QComboBox>(SIZE)->pos(), corner(1 + 5 + 1, 7));  // after its title and a blank
  ASSERT_NE(at<QListWidget>(FRUIT), nullptr);
  EXPECT_EQ(at<QListWidget>(FRUIT)->selectionMode(), QAbstractItemView::MultiSelection);
  EXPECT_EQ(at<QListWidget>(PICK)->selectionMode(), QAbstractItemView::SingleSelection);
  EXPECT_EQ(at<QListWidget>(FRUIT)->count(), 5);
  EXPECT_EQ(at<QListWidget>(FRUIT)->pos(), corner(1, 10));  // under its title
  EXPECT_EQ(at<QPushButton>(CANCEL)->geometry(), QRect(corner(12, 14), QSize((6 + 4) * CW, CH)));
  // A grab box is modal to the editor's window, centred over it; unmapped it
  // lets the window have its input again.
  EXPECT_EQ(QApplication::activeModalWidget(), box);
  // (Across: the box is taller than the test's window and keeps on the screen.)
  EXPECT_LE(std::abs(qw_layer->win_->geometry().center().x() - box->geometry().center().x()), 1);
  EXPECT_GE(box->y(), 0);
  ASSERT_EQ(dy_unmap(h), 0);
  EXPECT_FALSE(box->isVisible());
  EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
  ASSERT_EQ(dy_map(h, std::array<int, 4>().data()), 0);
  EXPECT_TRUE(box->isVisible());
  EXPECT_EQ(qd_box(h), box);  // the same window again
}

TEST_F(DialogWindowTest, BoxesThatDoNotGrabLeaveTheWindowItsInput) {
  dy_opts o;
  o.grab = DY_NOGRAB;
  o.x = 3;
  o.y = 2;
  int h = dy_make({dy_text_item(DY_KLABEL, 0, 0, "hi")}, o);
  ASSERT_EQ(dy_map(h, geo), 0);
  settle();
  box = qd_box(h);
  ASSERT_NE(box, nullptr);
  EXPECT_EQ(box->windowModality(), Qt::NonModal);
  EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
  // Not centred: at its column and line of the page, in the page's cells.
  EXPECT_EQ(box->pos(), qw_layer->grid_->mapToGlobal(QPoint(3 * 10, 2 * 20)));
  EXPECT_EQ(QPoint(geo[0], geo[1]), QPoint(3 * 10, 2 * 20));
  show(DY_DISPLAY, 0);
  EXPECT_TRUE(box->testAttribute(Qt::WA_ShowWithoutActivating));
  at<QPushButton>(OK)->click();
  EXPECT_EQ(take(), std::vector<std::string>{});  // a display box tells nobody
}

TEST_F(DialogWindowTest, WhatTheUserDoesReachesTheGettersAndTheCallback) {
  int h = show();
  QLineEdit *in = at<QLineEdit>(INPUT);
  in->setFocus();
  QTest::keyClicks(in, "XY");
  std::string text;
  ASSERT_EQ(dy_qtext(h, 1, text), 0);
  EXPECT_EQ(text, "firstXY");
  EXPECT_EQ(dy_get("test", h)->focus, int(INPUT));
  at<QPlainTextEdit>(NOTES)->setFocus();
  EXPECT_EQ(dy_get("test", h)->focus, int(NOTES));  // the model follows the focus
  QTest::keyClicks(at<QPlainTextEdit>(NOTES), "Z");
  ASSERT_EQ(dy_qtext(h, 2, text), 0);
  EXPECT_EQ(text, "Zone\ntwo");
  // Enter in a line is the box's, in a multi-line input a new line.
  QTest::keyClick(in, Qt::Key_Return);
  QTest::keyClick(at<QPlainTextEdit>(NOTES), Qt::Key_Return);
  ASSERT_EQ(dy_qtext(h, 2, text), 0);
  EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 2);
  QTest::keyClick(in, Qt::Key_F5);
  QTest::keyClick(in, Qt::Key_X, Qt::ControlModifier);
  EXPECT_EQ(take(), (std::vector<std::string>{ev(h, "return"), ev(h, "F5"), ev(h, "^X")}));

  // Toggles change the values and report nothing; an exclusive one is
  // turned on by its click, never off.
  QTest::mouseClick(toggle(STYLE, 1), Qt::LeftButton);
  QTest::mouseClick(toggle(ALIGN, 1), Qt::LeftButton);
  QTest::mouseClick(toggle(ALIGN, 1), Qt::LeftButton);
  std::vector<int> on;
  ASSERT_EQ(dy_qtg(h, 2, on), 0);
  EXPECT_EQ(on, (std::vector<int>{0, 1}));
  EXPECT_TRUE(toggle(ALIGN, 1)->isChecked());
  QTest::mouseClick(toggle(ALIGN, 0), Qt::LeftButton);
  ASSERT_EQ(dy_qtg(h, 1, on), 0);
  EXPECT_EQ(on, (std::vector<int>{0, 1}));
  ASSERT_EQ(dy_qtg(h, 2, on), 0);
  EXPECT_EQ(on, (std::vector<int>{1, 0}));
  EXPECT_TRUE(toggle(ALIGN, 0)->isChecked());
  EXPECT_FALSE(toggle(ALIGN, 1)->isChecked());

  // The choice by its keys; the lists by clicks on their lines.
  QTest::keyClick(at<QComboBox>(SIZE), Qt::Key_Down);
  int sel = 0;
  ASSERT_EQ(dy_qch(h, 1, sel), 0);
  EXPECT_EQ(sel, 2);
  QListWidget *fruit = at<QListWidget>(FRUIT), *pick = at<QListWidget>(PICK);
  click_row(fruit, 1);
  click_row(fruit, 2);
  click_row(pick, 0);
  QTest::qWait(320);
  click_row(pick, 2);
  std::vector<int> lines;
  ASSERT_EQ(dy_qscl(h, 1, lines), 0);
  EXPECT_EQ(lines, (std::vector<int>{2, 3}));
  ASSERT_EQ(dy_qscl(h, 2, lines), 0);
  EXPECT_EQ(lines, (std::vector<int>{3}));
  EXPECT_EQ(take(), (std::vector<std::string>{ev(h, "MENU1 2"), ev(h, "SC1 2"), ev(h, "SC1 3"),
                                              ev(h, "SC2 1"), ev(h, "SC2 3")}));
  // A second click on the line at once is a double click.
  click_row(pick, 2);
  EXPECT_EQ(take(), std::vector<std::string>{ev(h, "DSC2 3")});

  // The buttons; Escape and the close button press Cancel.
  at<QPushButton>(OK)->setFocus();
  QTest::keyClick(at<QPushButton>(OK), Qt::Key_Return);
  QTest::mouseClick(at<QPushButton>(CANCEL), Qt::LeftButton);
  QTest::keyClick(in, Qt::Key_Escape);
  box->close();
  EXPECT_EQ(take(), (std::vector<std::string>{ev(h, "B1"), ev(h, "B2"), ev(h, "B2"), ev(h, "B2")}));
  EXPECT_TRUE(box->isVisible());  // the callback decides what Cancel does
  QEvent activate(QEvent::WindowActivate);
  dy_callhook = [](const std::string &m, const std::string &e) {
    heard->push_back(m + e);
    return 0;
  };
  QCoreApplication::sendEvent(box, &activate);
  EXPECT_EQ(take(), std::vector<std::string>{ev(h, "focus")});
}

TEST_F(DialogWindowTest, SettersChangeTheLiveControls) {
  int h = show();
  ASSERT_EQ(dy_stext(h, 1, "second"), 0);
  EXPECT_EQ(at<QLineEdit>(INPUT)->text(), "second");
  ASSERT_EQ(dy_slabel(h, 1, "Full name:"), 0);
  EXPECT_EQ(at<QLabel>(LABEL)->text(), "Full name:");
  EXPECT_EQ(at<QLabel>(LABEL)->width(), 10 * CW);
  ASSERT_EQ(bu_dy_stg(h, 2, 2, 1), 0);
  EXPECT_TRUE(toggle(ALIGN, 1)->isChecked());
  ASSERT_EQ(bu_dy_sch(h, 1, 3), 0);
  EXPECT_EQ(at<QComboBox>(SIZE)->currentText(), "large");
  QListWidget *fruit = at<QListWidget>(FRUIT);
  ASSERT_EQ(bu_dy_ascl(h, 1, "date", 2, 1), 0);
  ASSERT_EQ(bu_dy_rscl(h, 1, 1, "PEAR"), 0);
  ASSERT_EQ(bu_dy_pscl(h, 1, 3), 0);
  EXPECT_EQ(fruit->verticalScrollBar()->value(), 2);  // apple at the top
  ASSERT_EQ(bu_dy_dscl(h, 1, 4, 2), 0);  // fig and plum
  ASSERT_EQ(fruit->count(), 4);
  EXPECT_EQ(fruit->item(0)->text(), "PEAR");
  EXPECT_EQ(fruit->item(1)->text(), "date");
  EXPECT_EQ(fruit->item(3)->text(), "kiwi");
  EXPECT_TRUE(fruit->item(1)->isSelected());
  ASSERT_EQ(bu_dy_sscl(h, 2, {"b", "c", "a"}, 1), 0);
  EXPECT_EQ(at<QListWidget>(PICK)->item(0)->text(), "a");
  const int red[6] = {255, 0, 0, 0, 0, 255};
  ASSERT_EQ(dy_Clabel(h, 1, red), 0);
  EXPECT_EQ(at<QLabel>(LABEL)->palette().color(QPalette::WindowText), QColor(255, 0, 0));
  EXPECT_EQ(at<QLabel>(LABEL)->palette().color(QPalette::Window), QColor(0, 0, 255));
  ASSERT_EQ(dy_sheader(h, "Renamed"), 0);
  EXPECT_EQ(box->windowTitle(), "Renamed");
  ASSERT_EQ(dy_sfocus(h, CANCEL + 1), 0);
  EXPECT_EQ(box->focusWidget(), at<QPushButton>(CANCEL));
  // What the setters did is what the getters read.
  std::vector<int> lines;
  ASSERT_EQ(dy_qscl(h, 1, lines), 0);
  EXPECT_EQ(lines, std::vector<int>{2});
}

TEST_F(DialogWindowTest, ListPopUpCopiesALineOrAll) {
  show();
  QListWidget *fruit = at<QListWidget>(FRUIT);
  auto copy = [&](int row, const char *which) {
    QPoint at = fruit->visualItemRect(fruit->item(row)).center();
    emit fruit->customContextMenuRequested(at);
    QMenu *menu = box->findChildren<QMenu *>().value(0);
    ASSERT_NE(menu, nullptr);
    for (QAction *a : menu->actions())
      if (a->text() == which) a->trigger();
    menu->close();
    settle();
  };
  copy(1, "Copy item");
  EXPECT_EQ(QGuiApplication::clipboard()->text(), "apple");
  EXPECT_EQ(pl_clip_own().lines, std::vector<std::string>{"apple"}) << "the editor's own copy too";
  copy(0, "Copy all");
  EXPECT_EQ(QGuiApplication::clipboard()->text(), "pear\napple\nfig\nplum\nkiwi");
  EXPECT_EQ(pl_clip_own().lines.size(), 5u);
  // A paste takes what another program copied since, and only that.
  pl_clip got;
  ASSERT_EQ(pl_clip_get(got), 1);
  EXPECT_EQ(got.lines.size(), 5u);
  QGuiApplication::clipboard()->setText("from elsewhere\nline two");
  ASSERT_EQ(pl_clip_get(got), 1);
  EXPECT_EQ(got.lines, (std::vector<std::string>{"from elsewhere", "line two"}));
}

TEST_F(DialogWindowTest, ABoxShownTakesALaterFontKeepingWhatTheUserDid) {
  int h = show();
  QLineEdit *in = at<QLineEdit>(INPUT);
  QListWidget *fruit = at<QListWidget>(FRUIT);
  in->setFocus();
  QTest::keyClicks(in, "XY");
  click_row(fruit, 1);
  ASSERT_EQ(bu_dy_pscl(h, 1, 2), 0);  // apple at the top
  int small_px = box->font().pixelSize();
  QRect small_in = in->geometry();
  // A font with a cell half as large again and half as tall again.
  constexpr int BW = 12, BH = 24;
  ASSERT_EQ(dy_setfont("Courier New%*%12%24"), 0);
  settle();
  ASSERT_EQ(qd_box(h), box) << "the same window, laid out again";
  EXPECT_EQ(box->cw, BW);
  EXPECT_EQ(box->ch, BH);
  EXPECT_GT(box->font().pixelSize(), small_px);
  dy_box *b = dy_get("test", h);
  EXPECT_EQ(box->size(), QSize(b->cols * BW, b->lines * BH));
  EXPECT_EQ(b->pw, box->frameGeometry().width());  // what DY_MAP tells follows
  auto corner = [](double x, double y) { return QPoint(int((x + 1) * BW + 0.5), int((y + 1) * BH + 0.5)); };
  EXPECT_EQ(in->geometry(), QRect(corner(7.5, 0), QSize(12 * BW, BH)));
  EXPECT_GT(in->width(), small_in.width());
  EXPECT_EQ(toggle(STYLE, 1)->pos(), corner(12, 3));
  EXPECT_EQ(fruit->pos(), corner(1, 10));
  EXPECT_EQ(fruit->visualItemRect(fruit->item(2)).height(), BH);
  EXPECT_EQ(at<QPushButton>(CANCEL)->geometry(), QRect(corner(12, 14), QSize((6 + 4) * BW, BH)));
  // What was typed, chosen and scrolled to, and where the focus was, stay.
  EXPECT_EQ(in->text(), "firstXY");
  EXPECT_TRUE(fruit->item(1)->isSelected());
  EXPECT_FALSE(fruit->item(0)->isSelected());
  EXPECT_EQ(fruit->verticalScrollBar()->value(), 1);
  EXPECT_EQ(box->focusWidget(), fruit);
  std::vector<int> lines;
  ASSERT_EQ(dy_qscl(h, 1, lines), 0);
  EXPECT_EQ(lines, std::vector<int>{2});
  // Back to the first font: the box shrinks to its first size.
  ASSERT_EQ(dy_setfont("Courier New%*%8%16"), 0);
  settle();
  EXPECT_EQ(in->geometry(), small_in);
}

// The click of a test, on the newest box, once the read is waiting.
void later(const std::function<void(qdbox *)> &act) {
  QTimer::singleShot(50, [act] {
    qdbox *newest = nullptr;
    for (int h = 1; h < 1000; h++)
      if (qdbox *d = qd_box(h); d && d->isVisible()) newest = d;
    if (newest) act(newest);
  });
}

TEST_F(DialogWindowTest, ModalQuestionsWaitInTheToolkit) {
  later([](qdbox *d) { static_cast<QPushButton *>(d->items.back().main)->click(); });
  EXPECT_EQ(asf_alert(1, {"Really Quit?"}), 2);  // Cancel, the second button
  later([](qdbox *d) { d->close(); });
  EXPECT_EQ(asf_alert(2, {"Only Continue"}), 0);  // closed: no Cancel to press
  later([](qdbox *d) {
    auto *in = static_cast<QLineEdit *>(d->items[1].main);
    QTest::keyClicks(in, "/notes");
    static_cast<QPushButton *>(d->items[2].main)->click();
  });
  std::string text = "docs";
  EXPECT_EQ(dy_ask("Select a Folder", "Folder:", text), 1);
  EXPECT_EQ(text, "docs/notes");
  settle();
  for (int h = 1; h < 1000; h++) EXPECT_EQ(qd_box(h), nullptr);  // all gone again
}

TEST_F(DialogWindowTest, PrinterBoxTakesEnterOrADoubleClick) {
  // A printing system of two queues, the second its default, first on PATH.
  std::string dir = ::testing::TempDir() + "printers." + std::to_string(getpid());
  ASSERT_EQ(mkdir(dir.c_str(), 0700), 0);
  std::ofstream(dir + "/lpstat") << "#!/bin/sh\n[ \"$1\" = -e ] && printf 'hall\\nlab\\n'\n"
                                    "[ \"$1\" = -d ] && echo 'system default destination: lab'\nexit 0\n";
  chmod((dir + "/lpstat").c_str(), 0755);
  const char *was = getenv("PATH");
  std::string path = was ? was : "";
  setenv("PATH", (dir + ":" + path).c_str(), 1);
  // The tester's own printer would come first: the environment is put back
  // however the test ends.
  struct env_back {
    std::string path;
    std::vector<std::pair<std::string, std::string>> kept;
    explicit env_back(std::string p) : path(std::move(p)) {
      for (const char *v : {"PRINTER", "LPDEST"})
        if (const char *x = getenv(v)) kept.emplace_back(v, x);
      unsetenv("PRINTER");
      unsetenv("LPDEST");
    }
    ~env_back() {
      setenv("PATH", path.c_str(), 1);
      for (auto &[k, v] : kept) setenv(k.c_str(), v.c_str(), 1);
    }
  } back(path);
  auto list = [](qdbox *d) { return static_cast<QListWidget *>(d->items[0].main); };
  std::string queue;
  later([list](qdbox *d) {
    QListWidget *l = list(d);
    EXPECT_EQ(d->windowTitle(), "Select a Printer");
    EXPECT_EQ(l->currentRow(), 1);  // the default, chosen
    EXPECT_TRUE(l->item(1)->isSelected());
    QTest::keyClick(l, Qt::Key_Up);
    QTest::keyClick(l, Qt::Key_Return);
  });
  EXPECT_EQ(dy_printbox("Select a Printer", queue), 1);
  EXPECT_EQ(queue, "hall");
  later([list](qdbox *d) {
    QListWidget *l = list(d);
    // As the window system gives a double click: a click, then the second press.
    QPoint at = l->visualItemRect(l->item(1)).center();
    QTest::mouseClick(l->viewport(), Qt::LeftButton, {}, at);
    QTest::mouseDClick(l->viewport(), Qt::LeftButton, {}, at);
  });
  EXPECT_EQ(dy_printbox("Where?", queue), 1);
  EXPECT_EQ(queue, "lab");
  later([](qdbox *d) { QTest::keyClick(d, Qt::Key_Escape); });
  queue.clear();
  EXPECT_EQ(dy_printbox("Where?", queue), 0);
  EXPECT_EQ(queue, "");
  unlink((dir + "/lpstat").c_str());
  rmdir(dir.c_str());
}

TEST_F(DialogWindowTest, DestroyedFromItsOwnHandlerTheBoxGoesSafely) {
  int h = show();
  QPointer<qdbox> window = box;
  QPushButton *ok = at<QPushButton>(OK);
  // Connected after the box's own handler: the box goes while the button's
  // signal is still being sent.
  QObject::connect(ok, &QPushButton::clicked, [h] { dy_destroy(h); });
  QTest::mouseClick(ok, Qt::LeftButton);
  EXPECT_EQ(qd_box(h), nullptr);
  EXPECT_EQ(take(), std::vector<std::string>{});  // its events went with it
  // Off the screen at once, freed only once the toolkit is back in its loop.
  ASSERT_FALSE(window.isNull());
  EXPECT_FALSE(window->isVisible());
  settle();
  EXPECT_TRUE(window.isNull());
  EXPECT_EQ(dy_qmap(h), -1);
}

}  // namespace
