// The classes of the window layer: the grid widget, the main window and the
// layer itself. Shared by the layer's files and its tests.
#pragma once
#include "fields/plat_qt/qt_int.h"
#include <QFrame>
#include <QImage>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QPainter>
#include <QRawFont>
#include <QRegion>
#include <QScrollBar>
#include <QToolBar>
#include <QWidget>
#include <functional>
#include <set>
#include <vector>

class qtplat;
class QLabel;
class QPushButton;

// Appends one event of the window to the field manager's queue.
void qw_post(uint16_t code, int ch, uint16_t mods, int x, int y, bool release);

class qgrid : public QWidget {
 public:
  explicit qgrid(qtplat *owner);

 protected:
  void paintEvent(QPaintEvent *e) override;
  void resizeEvent(QResizeEvent *e) override;
  void keyPressEvent(QKeyEvent *e) override;
  void keyReleaseEvent(QKeyEvent *e) override;
  void mousePressEvent(QMouseEvent *e) override;
  void mouseDoubleClickEvent(QMouseEvent *e) override;
  void mouseReleaseEvent(QMouseEvent *e) override;
  void mouseMoveEvent(QMouseEvent *e) override;
  void wheelEvent(QWheelEvent *e) override;
  void focusInEvent(QFocusEvent *e) override;
  void focusOutEvent(QFocusEvent *e) override;
  bool focusNextPrevChild(bool next) override;

 private:
  qtplat *owner_;  // the layer whose image is shown
};

class qwin : public QMainWindow {
 public:
  explicit qwin(qtplat *owner) : owner_(owner) {}

 protected:
  void closeEvent(QCloseEvent *e) override;
  void moveEvent(QMoveEvent *e) override;

 private:
  qtplat *owner_;  // the layer the close box asks
};

class qtplat : public fs_plat {
 public:
  qtplat();
  void run(int line, int col, const uint16_t *text, int count, int hilite, int colour,
           int intensity) override;
  void cursor(int line, int col, int colour) override;
  void tick(int line, int col, int on) override;
  void status(const std::string &text) override;
  void bell() override;
  void flash() override;
  void alert(const std::string &text) override;
  int wait(int ms) override;
  void peek() override;
  void title(const std::string &text) override;
  void geometry(fs_metrics &m) override;
  void size(int lines, int cols) override;
  void show(int on) override;
  void palette(int entry, int red, int green, int blue) override;
  void clear() override;
  void pointer(int shape) override;
  void flush() override;
  int font(const std::string &name) override;
  std::string font_name() override { return fontname_; }
  int font_known(const std::string &face) override;
  bool font_families(std::vector<std::string> &out) override;
  void menus(const fs_menu *bar, const fs_menu *popup) override;
  bool popup(int x, int y) override;
  bool fieldmenu(const fs_fieldmenu &m, int x, int y) override;
  int toolbar(int on) override;
  void scrollbar(long items, long first, long visible) override;
  bool ask(const std::string &question, int kind) override;
  std::string pdf(const std::vector<std::string> *lines, const std::string &title) override;

  void setfont(const QFont &f, const std::string &name);
  QSize gridsize(int lines, int cols) const;  // the grid widget for a grid size
  void resized();                             // the grid widget changed size
  void snap();                                // back to whole cells
  void note();                                // keeps the window's place for later
  void remember();                            // writes the window memory
  void key(const QKeyEvent &e, bool release);
  void overlay(QPainter &p, const QRect &area);
  void toolicons();                           // the tool bar's pictures, from icondir_
  int lost();                                 // the display or the process is ending
  void mark(int what);                        // sets a mark (0: none) and ends the wait

  qwin *win_ = nullptr;            // the main window
  qgrid *grid_ = nullptr;          // the page
  QScrollBar *sb_ = nullptr;       // the vertical scroll bar
  QToolBar *tb_ = nullptr;         // the tool bar, made on first use
  QMenu *popup_ = nullptr;         // the page's pop-up menu
  QMenu *fieldmenu_ = nullptr;     // the field menu shown last
  QImage img_;                     // what the grid shows
  QColor pal_[65];                 // the palette
  QFont font_;                     // the text font
  std::string fontname_;           // its name as given
  int cw_ = 9, ch_ = 15, ascent_ = 12;  // cell size and baseline
  int lines_ = 24, cols_ = 80;     // the grid
  int startlines_ = 0, startcols_ = 0;  // the grid wanted when first shown
  QSize screen_;                   // the screen's size
  bool noauto_ = false;            // no window memory
  bool iconic_ = false;            // start iconic
  bool ending_ = false;            // the window may close now
  bool painted_ = false;           // a paint reached the screen (benchmarks)
  qw_memory mem_;                  // the window's place, to be remembered
  std::string icondir_;            // the tool bar's pictures; "" beside the program

 private:
  QPainter &painter();
  void endpaint();
  void fillblank();
  QString cells(const uint16_t *text, int count) const;
  bool glyphs(const QString &s);  // glyphs_ for s; false when one is not in the font
  void drawcells(QPainter &p, QPoint at, const QString &s);  // one character a cell
  QRect cellrect(int line, int col) const;
  void drawstatus(const std::string &text, bool reverse);
  void keepgrid(const std::function<void()> &change);
  QMenu *buildmenu(const fs_menu &m, QWidget *parent);

  QRawFont raw_;                   // the text font, for runs that need no shaping
  std::vector<quint32> glyphof_;   // glyph of each character below 0x250, 0 not known
  QList<quint32> glyphs_;          // the glyphs of the run being drawn
  QList<QPointF> at_;              // and their places, one cell apart
  QPainter pt_;                    // open on img_ during a refresh
  bool painting_ = false;          // pt_ is open
  QRegion blank_;                  // cleared and not painted since: filled at the flush
  QRegion dirty_;                  // what changed since the last flush: the cells and
                                   // the status line, never the box around them
  std::set<long> ticks_;           // cells with a trailing-blank mark
  std::vector<uint8_t> rev_;       // reversed cells, for the cursor's colour
  int curline_ = 0, curcol_ = 0, curcolour_ = 64;  // the cursor
  bool gone_ = false;              // the window has gone
  bool marked_ = false;            // a mark was set: the wait ends
  int lone_ = 0;                   // right Ctrl (10) or Alt (6) down alone
  QFrame *askbox_ = nullptr;       // the close-box question
  QLabel *asktext_ = nullptr;
  QPushButton *askyes_ = nullptr, *askno_ = nullptr;
};

extern qtplat *qw_layer;

// Copies go to the desktop's clipboard too, and pastes look there first.
void qw_clipboard_install();

// Self-driven measurement and screenshots (see qt_bench.cpp).
void qw_bench_start();
void qw_bench_idle(qtplat *l);
void qw_bench_painted();  // the one window layer of the process
