// The window layer: a main window holding the grid widget, the scroll bar,
// the menu bar and the tool bar. The grid is drawn into an image, run by run
// as the field manager's comparison finds differences, and the widget only
// copies the changed rectangles of that image to the screen. Toolkit handlers
// append events and set marks; the read waits in wait(), which runs the
// toolkit's event loop until something arrived.
#include "fields/plat_qt/qt_dialog.h"
#include "fields/plat_qt/qt_window.h"
#include "platform/platform.h"

#include <QApplication>
#include <QCloseEvent>
#include <QElapsedTimer>
#include <QFontMetrics>
#include <QHBoxLayout>
#include <QGlyphRun>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QSocketNotifier>
#include <QTimer>
#include <QVBoxLayout>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sys/time.h>

qtplat *qw_layer = nullptr;

namespace {

constexpr int RULE_PX = 2;       // the rule above the status line
constexpr int BAR_PX = 3;        // the overwrite cursor: a bar under the cell
constexpr int INSBAR_PX = 2;     // the insert cursor: a bar at the cell's left
constexpr int STATUS_COLOUR = 64;
constexpr quint32 GLYPH_MISSING = 0xffffffff;  // in glyphof_: the font has no such glyph
constexpr size_t GLYPH_CACHE = 0x250;  // Latin and its extensions: one cell wide in the face

fs_qt_gonehook gonehook = nullptr;
bool rescued = false;

void rescue() {
  if (rescued) return;
  rescued = true;
  if (gonehook) gonehook();
}

// A lost display ends the toolkit with a fatal message: the changed files
// are saved first, as for a terminal that hangs up.
void onmessage(QtMsgType type, const QMessageLogContext &, const QString &msg) {
  if (type == QtFatalMsg) rescue();
  if (type == QtFatalMsg || type == QtCriticalMsg || getenv("XED_QT_DEBUG"))
    fprintf(stderr, "vorta: %s\n", msg.toLocal8Bit().constData());
}

void stamp(fs_event &e) {
  timeval tv;
  gettimeofday(&tv, nullptr);
  e.seconds = uint32_t(tv.tv_sec);
  e.microseconds = uint32_t(tv.tv_usec);
  if (!e.source) e.source = FS_SRC_NONE;
}

void atexit_save() {
  if (qw_layer) qw_layer->remember();
}

}  // namespace

void qw_post(uint16_t code, int ch, uint16_t mods, int x, int y, bool release) {
  fs_event e{};
  e.code = code;
  e.released = release ? 1 : 0;
  e.modifiers = mods;
  e.x = int16_t(std::clamp(x, -32768, 32767));
  e.y = int16_t(std::clamp(y, -32768, 32767));
  stamp(e);
  fs_postev(e, ch);
}

// ---- the grid widget ---------------------------------------------------------

qgrid::qgrid(qtplat *owner) : owner_(owner) {
  setAttribute(Qt::WA_OpaquePaintEvent);
  setAttribute(Qt::WA_InputMethodEnabled, false);
  setFocusPolicy(Qt::StrongFocus);
  setMouseTracking(true);
}

void qgrid::paintEvent(QPaintEvent *e) {
  QPainter p(this);
  for (const QRect &r : e->region()) p.drawImage(r, owner_->img_, r);
  owner_->overlay(p, e->region().boundingRect());
  owner_->painted_ = true;
  qw_bench_painted();
}

void qgrid::resizeEvent(QResizeEvent *) { owner_->resized(); }

void qgrid::keyPressEvent(QKeyEvent *e) { owner_->key(*e, false); }
void qgrid::keyReleaseEvent(QKeyEvent *e) { owner_->key(*e, true); }

// Tab and Shift+Tab are keys of the page, never a move between widgets.
bool qgrid::focusNextPrevChild(bool) { return false; }

static uint16_t button(Qt::MouseButton b) {
  return b == Qt::LeftButton ? FSK_LEFT_B : b == Qt::MiddleButton ? FSK_MIDDLE_B
         : b == Qt::RightButton ? FSK_RIGHT_B : 0;
}

void qgrid::mousePressEvent(QMouseEvent *e) {
  if (uint16_t b = button(e->button()))
    qw_post(b, -1, qk_mods(e->modifiers()), int(e->position().x()), int(e->position().y()), false);
}
void qgrid::mouseDoubleClickEvent(QMouseEvent *e) { mousePressEvent(e); }
void qgrid::mouseReleaseEvent(QMouseEvent *e) {
  if (uint16_t b = button(e->button()))
    qw_post(b, -1, qk_mods(e->modifiers()), int(e->position().x()), int(e->position().y()), true);
}
void qgrid::mouseMoveEvent(QMouseEvent *e) {
  uint16_t code = e->buttons() ? FSK_DRAG : FSK_MOVE;
  qw_post(code, -1, qk_mods(e->modifiers()), int(e->position().x()), int(e->position().y()), false);
}
void qgrid::wheelEvent(QWheelEvent *e) {
  int dy = e->angleDelta().y();
  if (!dy) return;
  qw_post(dy > 0 ? FSK_WHEELUP : FSK_WHEELDOWN, -1, qk_mods(e->modifiers()),
          int(e->position().x()), int(e->position().y()), false);
}
void qgrid::focusInEvent(QFocusEvent *) { qw_post(FSK_FOCUSIN, -1, 0, 0, 0, false); }
void qgrid::focusOutEvent(QFocusEvent *) { qw_post(FSK_FOCUSOUT, -1, 0, 0, 0, false); }

// ---- the main window ---------------------------------------------------------

void qwin::closeEvent(QCloseEvent *e) {
  if (owner_->ending_) {
    e->accept();
    return;
  }
  e->ignore();
  fs_closebox();
  owner_->mark(0);  // whatever the close box did, the read looks again
}
void qwin::moveEvent(QMoveEvent *) { owner_->note(); }

// ---- the layer -----------------------------------------------------------------

qtplat::qtplat() {
  for (int i = 0; i < 65; i++) pal_[i] = i ? QColor(229, 229, 229) : QColor(0, 0, 0);
  win_ = new qwin(this);
  QWidget *central = new QWidget(win_);
  auto *row = new QHBoxLayout(central);
  row->setContentsMargins(0, 0, 0, 0);
  row->setSpacing(0);
  grid_ = new qgrid(this);
  sb_ = new QScrollBar(Qt::Vertical, central);
  row->addWidget(grid_, 1);
  row->addWidget(sb_, 0);
  win_->setCentralWidget(central);
  win_->menuBar()->setVisible(false);
  QObject::connect(sb_, &QScrollBar::actionTriggered, [this](int) {
    // The value after the action is known only once the action has run.
    QTimer::singleShot(0, sb_, [this] { qw_post(FSK_SCROLLBAR, sb_->value(), 0, 0, 0, false); });
  });
  if (pl_endsig_fd() >= 0) {
    auto *n = new QSocketNotifier(pl_endsig_fd(), QSocketNotifier::Read, win_);
    QObject::connect(n, &QSocketNotifier::activated, [n] { n->setEnabled(false); });
  }
}

void qtplat::setfont(const QFont &f, const std::string &name) {
  font_ = f;
  fontname_ = name;
  qw_fontname n;
  qw_fontparse(name, n);
  QFontMetrics fm(f);
  cw_ = n.width;
  ch_ = n.height;
  // Spacing that makes every advance one cell wide, however the face is
  // drawn; fractional, or a run drifts right of its cells and its last
  // glyph is cut by the next run's background.
  qreal adv = QFontMetricsF(f).horizontalAdvance(QLatin1Char('M'));
  font_.setLetterSpacing(QFont::AbsoluteSpacing, qreal(cw_) - adv);
  ascent_ = fm.ascent() + (ch_ - fm.height()) / 2;
  raw_ = QRawFont::fromFont(f);
  glyphof_.assign(GLYPH_CACHE, 0);
  grid_->setMinimumSize(cw_, 2 * ch_ + RULE_PX);
  win_->setSizeIncrement(cw_, ch_);
}

QSize qtplat::gridsize(int lines, int cols) const {
  return QSize(cols * cw_, (lines + 1) * ch_ + RULE_PX);
}

void qtplat::keepgrid(const std::function<void()> &change) {
  QSize before = grid_->size();
  change();
  if (win_->layout()) win_->layout()->activate();
  QSize d = before - grid_->size();
  if (d.isNull()) return;
  if (win_->isMaximized() || win_->isFullScreen()) {
    mark(FS_MARK_RESIZE);
    return;
  }
  win_->resize(win_->size() + d);
}

void qtplat::resized() {
  QSize s = grid_->size();
  if (s == img_.size()) return;
  fillblank();
  QImage n(s.expandedTo(QSize(1, 1)), QImage::Format_RGB32);
  n.fill(pal_[0]);
  if (!img_.isNull()) {
    QPainter p(&n);
    p.drawImage(0, 0, img_);
  }
  endpaint();
  img_ = n;
  lines_ = std::max(1, s.height() / ch_ - 1);
  cols_ = std::max(1, s.width() / cw_);
  // Judged once the toolkit is idle: a change of the bars resizes the grid
  // and puts it back, which is no resize for the page.
  QTimer::singleShot(0, grid_, [this] {
    int l, c;
    fs_grid(&l, &c);
    if (l != lines_ || c != cols_) mark(FS_MARK_RESIZE);
  });
  // A size that is not whole cells is put right once the user lets go.
  if ((s.width() % cw_ || (s.height() - RULE_PX) % ch_) && !win_->isMaximized() &&
      !win_->isFullScreen())
    QTimer::singleShot(50, win_, [this] { snap(); });
  note();
}

void qtplat::snap() {
  QSize s = grid_->size();
  int w = s.width() % cw_, h = (s.height() - RULE_PX) % ch_;
  if (h < 0) h += ch_;
  if (w || h) win_->resize(win_->width() - w, win_->height() - h);
}

void qtplat::note() {
  if (!win_->isVisible() || win_->isMinimized() || win_->isMaximized()) return;
  mem_.has_pos = true;
  mem_.left = win_->x();
  mem_.top = win_->y();
  mem_.cols = cols_;
  mem_.lines = lines_;
  mem_.font = fontname_;
}

void qtplat::remember() {
  if (noauto_ || mem_.font.empty()) return;
  qw_memwrite(screen_.width(), screen_.height(), mem_);
}

QPainter &qtplat::painter() {
  if (!painting_) {
    pt_.begin(&img_);
    pt_.setFont(font_);
    painting_ = true;
  }
  return pt_;
}

void qtplat::endpaint() {
  if (painting_) pt_.end();
  painting_ = false;
}

QString qtplat::cells(const uint16_t *text, int count) const {
  QString s;
  s.reserve(count);
  for (int i = 0; i < count; i++) {
    uint32_t c = fs_subst(text[i]) ? 0xFFFD : fs_cellchar(text[i]);
    if (c < 32 || (c >= 127 && c < 160)) c = '.';
    s += c > 0xffff ? QChar(0xFFFD) : QChar(char16_t(c));
  }
  return s;
}

bool qtplat::glyphs(const QString &s) {
  if (!raw_.isValid()) return false;
  glyphs_.resize(s.size());
  at_.resize(s.size());
  for (qsizetype i = 0; i < s.size(); i++) {
    char16_t c = s[i].unicode();
    if (c >= GLYPH_CACHE) return false;
    quint32 &g = glyphof_[c];
    if (!g) {
      QList<quint32> one = raw_.glyphIndexesForString(QString(QChar(c)));
      g = one.size() == 1 && one[0] ? one[0] : GLYPH_MISSING;
    }
    if (g == GLYPH_MISSING) return false;
    glyphs_[i] = g;
    at_[i] = QPointF(qreal(i * cw_), 0);
  }
  return true;
}

void qtplat::drawcells(QPainter &p, QPoint at, const QString &s) {
  // The common case goes straight to the glyphs, placed one cell apart:
  // laying text out (shaping, spacing) costs more than the whole refresh
  // otherwise does. Characters the face lacks come from another face and
  // may not be one cell wide: they are drawn one at a time.
  if (glyphs(s)) {
    QGlyphRun g;
    g.setRawFont(raw_);
    g.setGlyphIndexes(glyphs_);
    g.setPositions(at_);
    p.drawGlyphRun(QPointF(at.x(), at.y() + ascent_), g);
    return;
  }
  for (qsizetype i = 0; i < s.size(); i++)
    p.drawText(at.x() + int(i) * cw_, at.y() + ascent_, s.mid(i, 1));
}

void qtplat::run(int line, int col, const uint16_t *text, int count, int hilite, int colour,
                 int intensity) {
  if (line < 1 || col < 1 || count < 1 || line > lines_ || col > cols_) return;
  count = std::min(count, cols_ - col + 1);
  colour = std::clamp(colour, 0, 64);
  bool reverse = hilite == 2 || hilite == 3;
  QRect r((col - 1) * cw_, (line - 1) * ch_, count * cw_, ch_);
  QPainter &p = painter();
  size_t at = size_t(line - 1) * size_t(cols_) + size_t(col - 1);
  if (rev_.size() != size_t(lines_) * size_t(cols_)) rev_.assign(size_t(lines_) * size_t(cols_), 0);
  std::fill(rev_.begin() + long(at), rev_.begin() + long(at) + count, reverse ? 1 : 0);
  QColor fg = pal_[colour], bg = pal_[0];
  if (reverse) std::swap(fg, bg);
  if (intensity == 0 || colour == 0) {
    p.fillRect(r, reverse ? pal_[colour] : pal_[0]);
  } else {
    p.fillRect(r, bg);
    p.setPen(fg);
    QString s = cells(text, count);
    drawcells(p, r.topLeft(), s);
    if (intensity == 2) drawcells(p, r.topLeft() + QPoint(1, 0), s);
    if (hilite == 3) p.fillRect(r.x(), r.bottom(), r.width(), 1, pal_[0]);
    if (hilite == 4) p.fillRect(r.x(), r.bottom(), r.width(), 1, pal_[64]);
  }
  if (!blank_.isEmpty()) blank_ -= r;
  dirty_ += r;
}

void qtplat::cursor(int line, int col, int colour) {
  dirty_ += cellrect(curline_, curcol_);
  curline_ = line;
  curcol_ = col;
  curcolour_ = colour;
  dirty_ += cellrect(line, col);
}

QRect qtplat::cellrect(int line, int col) const {
  if (line < 1 || col < 1) return QRect();
  return QRect((col - 1) * cw_, (line - 1) * ch_, cw_, ch_);
}

void qtplat::tick(int line, int col, int on) {
  long k = long(line) << 16 | col;
  if (on) ticks_.insert(k);
  else ticks_.erase(k);
  dirty_ += cellrect(line, col);
}

// What is drawn over the image: the trailing-blank marks and the cursor.
void qtplat::overlay(QPainter &p, const QRect &area) {
  for (long k : ticks_) {
    QRect c = cellrect(int(k >> 16), int(k & 0xffff));
    if (c.intersects(area)) p.fillRect(c.x() + cw_ / 2 - 1, c.bottom() - 2, 2, 2, pal_[64]);
  }
  QRect c = cellrect(curline_, curcol_);
  if (c.isNull() || !c.intersects(area) || curline_ > lines_ || curcol_ > cols_) return;
  size_t at = size_t(curline_ - 1) * size_t(cols_) + size_t(curcol_ - 1);
  bool rev = at < rev_.size() && rev_[at];
  QColor col = rev ? pal_[0] : pal_[std::clamp(curcolour_, 0, 64)];
  if (asqinsert()) p.fillRect(c.x(), c.y(), INSBAR_PX, ch_, col);
  else p.fillRect(c.x(), c.bottom() - BAR_PX + 1, cw_, BAR_PX, col);
}

void qtplat::drawstatus(const std::string &text, bool reverse) {
  QPainter &p = painter();
  int y = lines_ * ch_;
  QRect r(0, y + RULE_PX, img_.width(), ch_);
  p.fillRect(0, y, img_.width(), RULE_PX, pal_[STATUS_COLOUR]);
  p.fillRect(r, reverse ? pal_[STATUS_COLOUR] : pal_[0]);
  p.setPen(reverse ? pal_[0] : pal_[STATUS_COLOUR]);
  drawcells(p, r.topLeft(), QString::fromLatin1(text.data(), int(text.size())));
  if (!blank_.isEmpty()) blank_ -= QRect(0, y, img_.width(), ch_ + RULE_PX);
  dirty_ += QRect(0, y, img_.width(), ch_ + RULE_PX);
}

void qtplat::status(const std::string &text) { drawstatus(text, false); }

void qtplat::alert(const std::string &text) {
  drawstatus(text, true);
  flush();
  QApplication::beep();
}

void qtplat::bell() { QApplication::beep(); }

void qtplat::flash() {
  QApplication::beep();
  QApplication::alert(win_, 200);
}

// While a macro runs: the window's messages are handled (so it lives and
// the halt key arrives), whatever is queued already, and nothing waits.
void qtplat::peek() {
  if (gone_) return;
  QCoreApplication::processEvents(QEventLoop::AllEvents);
  QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

int qtplat::wait(int ms) {
  if (gone_) return FS_WAIT_GONE;
  if (fs_evpending()) return FS_WAIT_EVENT;
  // Changes the read made by itself (a typed character) are painted now.
  asrefresh();
  QElapsedTimer t;
  t.start();
  QTimer wake;
  wake.setSingleShot(true);
  if (ms >= 0) wake.start(ms);
  for (;;) {
    if (pl_endsig()) return lost();
    qw_bench_idle(this);
    if (fs_evpending()) return FS_WAIT_EVENT;
    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    if (gone_) return FS_WAIT_GONE;
    if (pl_endsig()) return lost();
    if (fs_evpending()) return FS_WAIT_EVENT;
    if (marked_) {
      marked_ = false;
      return FS_WAIT_EVENT;
    }
    if (ms >= 0 && t.elapsed() >= ms) return FS_WAIT_TIMEOUT;
  }
}

void qtplat::mark(int what) {
  if (what) fs_mark(what);
  marked_ = true;
}

int qtplat::lost() {
  rescue();
  gone_ = true;
  fs_mark(FS_MARK_GONE);
  return FS_WAIT_GONE;
}

void qtplat::title(const std::string &text) { win_->setWindowTitle(QString::fromUtf8(text.c_str())); }

void qtplat::geometry(fs_metrics &m) {
  m = fs_metrics{};
  m.cell_w = cw_;
  m.cell_h = ch_;
  m.client_w = grid_->width();
  m.client_h = grid_->height();
  m.screen_w = screen_.width();
  m.screen_h = screen_.height();
  m.left = win_->x();
  m.top = win_->y();
  m.toolbar_h = 0;  // the grid's own origin is below the tool bar already
  lines_ = std::max(1, m.client_h / ch_ - 1);
  cols_ = std::max(1, m.client_w / cw_);
}

void qtplat::size(int lines, int cols) {
  if (lines < 1 || cols < 1) return;
  QSize want = gridsize(lines, cols), now = grid_->size();
  win_->resize(win_->size() + (want - now));
  if (win_->layout()) win_->layout()->activate();
  resized();
}

void qtplat::show(int on) {
  if (!on) {
    win_->hide();
    return;
  }
  if (win_->isVisible()) return;
  if (iconic_) win_->showMinimized();
  else win_->show();
  // Showing lays the window out anew: the grid asked for comes back.
  if (startlines_) size(startlines_, startcols_);
  startlines_ = 0;
  grid_->setFocus();
}

void qtplat::palette(int entry, int red, int green, int blue) {
  if (entry < 0 || entry > 64) return;
  pal_[entry] = QColor(red & 255, green & 255, blue & 255);
}

// A clear is followed by the runs of nearly the whole page, each with its
// background: the cells no run covered are filled once, at the flush.
void qtplat::clear() {
  blank_ = QRegion(img_.rect());
  ticks_.clear();
  rev_.assign(rev_.size(), 0);
  dirty_ = QRegion(img_.rect());
}

void qtplat::pointer(int shape) {
  static const Qt::CursorShape shapes[4] = {Qt::ArrowCursor, Qt::ArrowCursor, Qt::WaitCursor,
                                            Qt::IBeamCursor};
  grid_->setCursor(shapes[shape >= 1 && shape <= 3 ? shape : 1]);
}

void qtplat::fillblank() {
  if (blank_.isEmpty()) return;
  QPainter &p = painter();
  for (const QRect &r : blank_) p.fillRect(r, pal_[0]);
  blank_ = QRegion();
}

void qtplat::flush() {
  fillblank();
  endpaint();
  if (!dirty_.isEmpty()) grid_->update(dirty_);
  dirty_ = QRegion();
}

int qtplat::font(const std::string &name) {
  QFont f;
  if (!qw_font(name, f)) return 1;
  int lines = lines_, cols = cols_;
  setfont(f, name);
  size(lines, cols);
  mark(FS_MARK_RESIZE);
  return 0;
}

int qtplat::font_known(const std::string &face) { return qw_facefound(face) ? 1 : 0; }

bool qtplat::ask(const std::string &question, int kind) {
  if (!askbox_) {
    askbox_ = new QFrame(win_);
    askbox_->setFrameStyle(QFrame::Box | QFrame::Raised);
    askbox_->setAutoFillBackground(true);
    auto *v = new QVBoxLayout(askbox_);
    asktext_ = new QLabel(askbox_);
    v->addWidget(asktext_);
    auto *h = new QHBoxLayout();
    v->addLayout(h);
    askyes_ = new QPushButton("Continue", askbox_);
    askno_ = new QPushButton("Cancel", askbox_);
    h->addWidget(askyes_);
    h->addWidget(askno_);
    QObject::connect(askyes_, &QPushButton::clicked, [this] {
      askbox_->hide();
      remember();
      gone_ = true;
      mark(FS_MARK_GONE);
    });
    QObject::connect(askno_, &QPushButton::clicked, [this] {
      askbox_->hide();
      grid_->setFocus();
    });
  }
  asktext_->setText(QString::fromLatin1(question.c_str()));
  // Kind 3 puts Cancel first: the safe answer is the default one.
  QHBoxLayout *h = static_cast<QHBoxLayout *>(askbox_->layout()->itemAt(1)->layout());
  h->removeWidget(askyes_);
  h->removeWidget(askno_);
  h->addWidget(kind == 3 ? askno_ : askyes_);
  h->addWidget(kind == 3 ? askyes_ : askno_);
  askbox_->adjustSize();
  askbox_->move((win_->width() - askbox_->width()) / 2, (win_->height() - askbox_->height()) / 2);
  askbox_->show();
  askbox_->raise();
  (kind == 3 ? askno_ : askyes_)->setFocus();
  return true;
}

void qtplat::key(const QKeyEvent &e, bool release) {
  quint32 vk = e.nativeVirtualKey();
  bool rctrl = vk == QK_CTRL_R, ralt = vk == QK_ALT_R || vk == QK_ALTGR;
  // Right Ctrl and right Alt alone are keys of their own (next line, code 6).
  if (rctrl || ralt) {
    if (!release) lone_ = rctrl ? 10 : 6;
    else if (lone_ == (rctrl ? 10 : 6)) {
      qw_post(uint16_t(lone_), lone_, 0, 0, 0, false);
      qw_post(uint16_t(lone_), lone_, 0, 0, 0, true);
      lone_ = 0;
    }
    return;
  }
  if (!release) lone_ = 0;
  qk_key k;
  if (!qk_map(e, k)) return;
  qw_post(uint16_t(k.code), k.ch, k.mods, 0, 0, release);
}

// ---- start ---------------------------------------------------------------------

namespace {

// Window options as fsinit takes them; here only what the window needs first.
struct opts {
  std::string font;
  int lines = 0, cols = 0;
  bool has_pos = false;
  int left = 0, top = 0;
  bool iconic = false, noauto = false;
};

opts readopts(int argc, char **argv) {
  opts o;
  auto is = [](const char *a, const char *n1, const char *n2) {
    return (a[0] == '-' || a[0] == '/') && (!strcmp(a + 1, n1) || !strcmp(a + 1, n2));
  };
  for (int i = 1; i < argc && argv[i]; i++) {
    const char *a = argv[i];
    bool more = i + 1 < argc && argv[i + 1], two = more && i + 2 < argc && argv[i + 2];
    if (is(a, "font", "Wt") && more) o.font = argv[++i];
    else if (is(a, "height", "Wh") && more) o.lines = atoi(argv[++i]);
    else if (is(a, "width", "Ww") && more) o.cols = atoi(argv[++i]);
    else if (is(a, "position", "Wp") && two) {
      o.has_pos = true;
      o.left = atoi(argv[++i]);
      o.top = atoi(argv[++i]);
    } else if (is(a, "iconic", "iconic")) o.iconic = true;
    // -icon_position is not looked at: where a minimised window shows is the
    // window manager's choice, and the toolkit has no call to ask for a place.
    else if (is(a, "noauto", "noauto")) o.noauto = true;
  }
  return o;
}

// The defaults of a screen size: position, lines, columns.
void screendefaults(int sw, int sh, qw_memory &m) {
  bool big = sw > 1024 && sh > 768, mid = sw > 800 && sh > 600;
  m.has_pos = true;
  m.left = big ? 140 : 10;
  m.top = 10;
  m.lines = big ? 31 : mid ? 28 : 24;
  m.cols = big ? 85 : 80;
}

}  // namespace

fs_plat *fs_plat_qt(int argc, char **argv, fs_qt_gonehook ongone, std::string &err) {
  if (qw_layer) return qw_layer;
  if (!fs_qt_display()) {
    err = "no display";
    return nullptr;
  }
  gonehook = ongone;
  qInstallMessageHandler(onmessage);
  static int qargc = 1;
  static char name[] = "xed";
  static char *qargv[] = {name, nullptr};
  // The toolkit keeps argc by reference and argv for its life: ours are static.
  auto *app = new QApplication(qargc, qargv);
  if (!QGuiApplication::primaryScreen()) {
    delete app;
    err = "the display has no screen";
    return nullptr;
  }
  QApplication::setQuitOnLastWindowClosed(false);
  auto *l = new qtplat();
  QRect scr = QGuiApplication::primaryScreen()->geometry();
  l->screen_ = scr.size();
  opts o = readopts(argc, argv);
  l->noauto_ = o.noauto;
  l->iconic_ = o.iconic;
  qw_memory saved = o.noauto ? qw_memory() : qw_memread(scr.width(), scr.height());
  qw_memory def;
  screendefaults(scr.width(), scr.height(), def);
  // An option first, then what was saved, then the screen's default.
  std::string fontname = !o.font.empty() ? o.font : !saved.font.empty() ? saved.font
                                                  : qw_fontdefault(scr.width(), scr.height());
  QFont f;
  if (!qw_font(fontname, f)) {
    fprintf(stderr, "Unable to load font %s\n", fontname.c_str());
    fontname = qw_fontdefault(scr.width(), scr.height());
    if (!qw_font(fontname, f)) {
      err = "Unable to load default font";
      return nullptr;
    }
  }
  l->setfont(f, fontname);
  int lines = o.lines > 0 ? o.lines : saved.lines ? saved.lines : def.lines;
  int cols = o.cols > 0 ? o.cols : saved.cols ? saved.cols : def.cols;
  qw_memory pos = o.has_pos ? qw_memory() : saved;
  if (o.has_pos) pos.has_pos = true, pos.left = o.left, pos.top = o.top;
  if (!pos.has_pos) pos = def;
  pos.lines = lines;
  pos.cols = cols;
  QSize g = l->gridsize(lines, cols);
  qw_memclamp(pos, scr.width(), scr.height(), g.width(), g.height());
  l->lines_ = pos.lines;
  l->cols_ = pos.cols;
  l->grid_->resize(g);
  l->win_->move(scr.x() + pos.left, scr.y() + pos.top);
  l->size(pos.lines, pos.cols);
  l->startlines_ = pos.lines;
  l->startcols_ = pos.cols;
  l->mem_ = pos;
  l->mem_.font = fontname;
  qw_layer = l;
  atexit(atexit_save);
  qw_bench_start();
  qd_install();
  qw_clipboard_install();
  return l;
}
