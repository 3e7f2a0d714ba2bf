// Dialog boxes as windows of their own: the controls of each kind of item
// made and kept in step with the model, the box placed over the editor's
// window, shown, hidden and let go, and the picture of it all.
#include "fields/plat_qt/qt_dialog.h"
#include "fields/plat_qt/qt_window.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGuiApplication>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPainter>
#include <QPlainTextEdit>
#include <QPointer>
#include <QPushButton>
#include <QRadioButton>
#include <QScreen>
#include <QScrollBar>
#include <QSignalBlocker>
#include <QTimer>
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <map>

namespace {

std::map<int, QPointer<qdbox>> shown;  // the boxes that have a window, by handle

QString qs(const std::string &s) {
  QString u = QString::fromUtf8(s.data(), qsizetype(s.size()));
  // Bytes that are not UTF-8 are shown as Latin-1, one character each.
  return u.contains(QChar::ReplacementCharacter) ? QString::fromLatin1(s.data(), qsizetype(s.size())) : u;
}

// A text on a button or toggle: '&' is no mnemonic here.
QString plain(const std::string &s) { return qs(s).replace('&', "&&"); }

int len(const std::string &s) { return int(s.size()); }

bool given(const int rgb[3]) { return rgb[0] >= 0 && rgb[1] >= 0 && rgb[2] >= 0; }
QColor colour(const int rgb[3]) { return QColor(rgb[0] & 255, rgb[1] & 255, rgb[2] & 255); }

// An item's colours on a control: text, then background; -1 keeps the box's.
void paint(QWidget *w, const dy_colours &c) {
  if (!w) return;
  QPalette p = w->parentWidget() ? w->parentWidget()->palette() : w->palette();
  if (given(c.fg))
    for (auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
      p.setColor(role, colour(c.fg));
  if (given(c.bg))
    for (auto role : {QPalette::Window, QPalette::Base, QPalette::Button})
      p.setColor(role, colour(c.bg));
  w->setAutoFillBackground(given(c.bg));
  w->setPalette(p);
}

QLabel *title_label(qdbox &d, const dy_item &it) {
  return it.text.empty() ? nullptr : new QLabel(qs(it.text), &d);
}

void sync_title(qdbox &d, qd_item &v, const dy_item &it, double width) {
  if (!v.title) return;
  v.title->setText(qs(it.text));
  v.title->setGeometry(d.cells(it.x, it.y, std::max(width, double(len(it.text))), 1));
  paint(v.title, it.col);
}

// ---- each kind of item: its controls made, and brought in step ---------------

void make_label(qdbox &d, int i) { d.items[i].main = new QLabel(&d); }
void sync_label(qdbox &d, int i) {
  const dy_item &it = d.model->items[i];
  auto *l = static_cast<QLabel *>(d.items[i].main);
  l->setText(qs(it.text));
  l->setGeometry(d.cells(it.x, it.y, std::max(1, len(it.text)), 1));
  paint(l, it.col);
}

void make_input(qdbox &d, int i) {
  const dy_item &it = d.model->items[i];
  if (it.width > 0) {
    auto *e = new QLineEdit(&d);
    e->setTextMargins(0, 0, 0, 0);
    d.items[i].main = e;
  } else {
    auto *e = new QPlainTextEdit(&d);
    e->setLineWrapMode(QPlainTextEdit::NoWrap);
    d.items[i].main = e;
  }
}
void sync_input(qdbox &d, int i) {
  const dy_item &it = d.model->items[i];
  QWidget *w = d.items[i].main;
  QString text = qs(it.text);
  if (auto *e = dynamic_cast<QLineEdit *>(w)) {
    if (e->text() != text) e->setText(text);
    e->setGeometry(d.cells(it.x, it.y, it.width, 1));
  } else if (auto *m = dynamic_cast<QPlainTextEdit *>(w)) {
    QSignalBlocker quiet(m);
    if (m->toPlainText() != text) m->setPlainText(text);
    m->setGeometry(d.cells(it.x, it.y, DY_MULTI_COLS, std::max(3.0, std::ceil(it.height))));
  }
  paint(w, it.col);
}

void make_button(qdbox &d, int i) {
  auto *b = new QPushButton(&d);
  b->setAutoDefault(false);
  b->setDefault(false);
  d.items[i].main = b;
}
void sync_button(qdbox &d, int i) {
  const dy_item &it = d.model->items[i];
  auto *b = static_cast<QPushButton *>(d.items[i].main);
  b->setText(plain(it.text));
  b->setGeometry(d.cells(it.x, it.y, len(it.text) + 4, 1));
  paint(b, it.col);
}

void make_tg(qdbox &d, int i) {
  const dy_item &it = d.model->items[i];
  qd_item &v = d.items[i];
  v.title = title_label(d, it);
  // The group's rule (one on at a time, or none yet) is the model's: the
  // toolkit's own exclusivity would refuse a group with none on.
  for (size_t t = 0; t < it.lines.size(); t++) {
    QAbstractButton *b = it.exclusive ? static_cast<QAbstractButton *>(new QRadioButton(&d))
                                      : static_cast<QAbstractButton *>(new QCheckBox(&d));
    b->setAutoExclusive(false);
    v.toggles.push_back(b);
  }
}
void sync_tg(qdbox &d, int i) {
  const dy_item &it = d.model->items[i];
  qd_item &v = d.items[i];
  sync_title(d, v, it, 0);
  size_t n = std::min({v.toggles.size(), it.lines.size(), it.tx.size(), it.ty.size()});
  for (size_t t = 0; t < n; t++) {
    QAbstractButton *b = v.toggles[t];
    QSignalBlocker quiet(b);
    b->setText(plain(it.lines[t]));
    b->setChecked(t < it.on.size() && it.on[t]);
    b->setGeometry(d.cells(it.tx[t], it.ty[t], 4 + len(it.lines[t]), 1));
    paint(b, it.col);
  }
}

void make_ch(qdbox &d, int i) {
  const dy_item &it = d.model->items[i];
  d.items[i].title = title_label(d, it);
  d.items[i].main = new QComboBox(&d);
}
void sync_ch(qdbox &d, int i) {
  const dy_item &it = d.model->items[i];
  qd_item &v = d.items[i];
  auto *c = static_cast<QComboBox *>(v.main);
  QSignalBlocker quiet(c);
  QStringList texts;
  int widest = 0;
  for (const std::string &t : it.lines) {
    texts << qs(t);
    widest = std::max(widest, len(t));
  }
  QStringList now;
  for (int k = 0; k < c->count(); k++) now << c->itemText(k);
  if (now != texts) {
    c->clear();
    c->addItems(texts);
  }
  c->setCurrentIndex(it.selected - 1);
  sync_title(d, v, it, 0);
  double x = it.x + (it.text.empty() ? 0 : len(it.text) + 1);
  c->setGeometry(d.cells(x, it.y, widest + 4, 1));
  paint(c, it.col);
}

void make_scl(qdbox &d, int i) {
  const dy_item &it = d.model->items[i];
  d.items[i].title = title_label(d, it);
  auto *l = new QListWidget(&d);
  l->setSelectionMode(it.multiple ? QAbstractItemView::MultiSelection
                                  : QAbstractItemView::SingleSelection);
  l->setVerticalScrollMode(QAbstractItemView::ScrollPerItem);
  l->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  l->setUniformItemSizes(true);
  l->setContextMenuPolicy(Qt::CustomContextMenu);
  d.items[i].main = l;
}
void sync_scl(qdbox &d, int i) {
  const dy_item &it = d.model->items[i];
  qd_item &v = d.items[i];
  auto *l = static_cast<QListWidget *>(v.main);
  QSignalBlocker quiet(l), quietbar(l->verticalScrollBar());
  bool same = l->count() == int(it.lines.size());
  for (int k = 0; same && k < l->count(); k++) same = l->item(k)->text() == qs(it.lines[size_t(k)]);
  if (!same) {
    l->clear();
    for (const std::string &t : it.lines) new QListWidgetItem(qs(t), l);
    v.top = -1;
  }
  // A line is a cell high, in the font the box has now.
  bool tall = !same;
  for (int k = 0; k < l->count(); k++) {
    if (l->item(k)->sizeHint().height() == d.ch) continue;
    l->item(k)->setSizeHint(QSize(0, d.ch));
    tall = true;
  }
  if (tall) {
    l->doItemsLayout();  // the scroll range of the lines, before scrolling
    v.top = -1;
  }
  for (int k = 0; k < l->count(); k++)
    l->item(k)->setSelected(size_t(k) < it.on.size() && it.on[size_t(k)]);
  if (l->count()) l->setCurrentRow(std::clamp(it.cursor, 0, l->count() - 1), QItemSelectionModel::NoUpdate);
  if (it.top != v.top && it.top >= 0 && it.top < l->count()) {
    l->verticalScrollBar()->setValue(it.top);
    v.top = it.top;
  }
  sync_title(d, v, it, it.width);
  int rows = std::max(1, int(std::ceil(it.height)));
  QRect r = d.cells(it.x, it.y + 1, std::max(1.0, it.width) + 1, rows);
  int frame = 2 * l->frameWidth();
  l->setGeometry(r.adjusted(0, 0, frame, frame));
  paint(l, it.col);
}

struct kindrow {
  void (*make)(qdbox &d, int i);  // the controls, once
  void (*sync)(qdbox &d, int i);  // their texts, values, places and colours
};
constexpr kindrow kinds[] = {
    {make_label, sync_label}, {make_input, sync_input}, {make_button, sync_button},
    {make_tg, sync_tg},       {make_ch, sync_ch},       {make_scl, sync_scl},
};
static_assert(sizeof kinds / sizeof kinds[0] == DY_NKINDS, "a row for every kind of item");

// ---- the box -----------------------------------------------------------------

QWidget *focus_target(const qd_item &v) {
  return v.main ? v.main : v.toggles.empty() ? nullptr : v.toggles.front();
}

// Where a box goes when it is shown: centred over the editor's window with
// the offsets in cells, or where the model placed it on the page; never off
// the screen.
void place(qdbox &d) {
  const dy_box &b = *d.model;
  QWidget *win = qw_layer->win_;
  QPoint at;
  if (b.opts.centre) {
    at = win->geometry().center() - QPoint(d.width() / 2, d.height() / 2) +
         QPoint(int(b.opts.x * d.cw), int(b.opts.y * d.ch));
  } else {
    at = qw_layer->grid_->mapToGlobal(QPoint(b.placed ? b.px : 0, b.placed ? b.py : 0));
  }
  if (QScreen *s = win->screen()) {
    QRect room = s->availableGeometry();
    at.setX(std::clamp(at.x(), room.left(), std::max(room.left(), room.right() - d.width())));
    at.setY(std::clamp(at.y(), room.top(), std::max(room.top(), room.bottom() - d.height())));
  }
  d.move(at);
}

void show_box(qdbox &d) {
  if (d.isVisible()) return;
  if (!qw_layer->win_->isVisible()) {
    // A box mapped before the editor's window is up (by a macro of the
    // command line) is placed over that window once it is there.
    QTimer::singleShot(50, &d, [&d] {
      if (d.model && d.model->mapped) qd_sync(d);
    });
    return;
  }
  dy_box &b = *d.model;
  // The editor's window takes no input while a grab box is up.
  d.setWindowModality(b.opts.grab == DY_GRAB ? Qt::WindowModal : Qt::NonModal);
  d.setAttribute(Qt::WA_ShowWithoutActivating, b.opts.grab == DY_DISPLAY);
  place(d);
  d.show();
  d.raise();
  if (b.opts.grab != DY_DISPLAY) d.activateWindow();
  d.focus_shown = -2;
  // What the map tells: the window's frame, from the corner of the page.
  QRect frame = d.frameGeometry();
  QPoint corner = frame.topLeft() - qw_layer->grid_->mapToGlobal(QPoint(0, 0));
  b.placed = true;
  b.px = corner.x();
  b.py = corner.y();
  b.pw = frame.width();
  b.ph = frame.height();
}

qdbox *make_box(dy_box &b) {
  auto *d = new qdbox(b, qw_layer->win_);
  int seen[DY_NKINDS] = {};
  d->items.resize(b.items.size());
  for (int i = 0; i < int(b.items.size()); i++) {
    int kind = std::clamp(b.items[size_t(i)].kind, 0, DY_NKINDS - 1);
    d->items[size_t(i)].number = ++seen[kind];
    kinds[kind].make(*d, i);
    qd_wire(*d, i);
  }
  b.view = d;
  shown[b.handle] = d;
  return d;
}

void let_go(dy_box &b) {
  auto *d = static_cast<qdbox *>(b.view);
  b.view = nullptr;
  shown.erase(b.handle);
  if (!d) return;
  // The box may be going from inside one of its own handlers: the window
  // goes once the toolkit is back in its loop.
  d->model = nullptr;
  d->hide();
  d->deleteLater();
}

void hook(dy_box &b) {
  if (b.gone) return let_go(b);
  auto *d = static_cast<qdbox *>(b.view);
  if (!d && !b.mapped) return;  // made when first shown
  if (!d) d = make_box(b);
  qd_sync(*d);
}

// The box takes the dialog font and its cell; one the window cannot make
// is the editor's text font.
void take_font(qdbox &d) {
  QFont f;
  qw_fontname n;
  d.fontname = dy_font();
  if (qw_font(d.fontname, f) && qw_fontparse(d.fontname, n)) {
    d.cw = n.width;
    d.ch = n.height;
  } else {
    f = qw_layer->font_;
    f.setLetterSpacing(QFont::AbsoluteSpacing, 0);
    d.cw = qw_layer->cw_;
    d.ch = qw_layer->ch_;
  }
  d.setFont(f);
}

}  // namespace

qdbox::qdbox(dy_box &b, QWidget *parent) : QDialog(parent), model(&b) {
  take_font(*this);
  setSizeGripEnabled(false);
}

QRect qdbox::cells(double x, double y, double w, double h) const {
  // One cell of margin at the left and at the top, inside the window.
  int left = int(std::lround((x + 1) * cw)), top = int(std::lround((y + 1) * ch));
  return QRect(left, top, int(std::lround(w * cw)), int(std::lround(h * ch)));
}

void qd_sync(qdbox &d) {
  dy_box &b = *d.model;
  std::string title = b.opts.title;
  if (title.empty()) title = qw_layer->win_->windowTitle().toStdString();
  d.setWindowTitle(title.empty() ? QString(" ") : qs(title));
  QPalette p = qw_layer->win_->palette();
  if (given(b.opts.bg)) p.setColor(QPalette::Window, colour(b.opts.bg));
  d.setPalette(p);
  bool refont = d.fontname != dy_font();
  if (refont) take_font(d);
  d.setFixedSize(b.cols * d.cw, b.lines * d.ch);
  for (int i = 0; i < int(b.items.size()) && i < int(d.items.size()); i++)
    kinds[std::clamp(b.items[size_t(i)].kind, 0, DY_NKINDS - 1)].sync(d, i);
  if (!b.mapped) {
    d.hide();
    return;
  }
  show_box(d);
  if (refont) {
    // Grown or shrunk where it stands: the map's size follows.
    b.pw = d.frameGeometry().width();
    b.ph = d.frameGeometry().height();
  }
  if (b.focus != d.focus_shown && b.focus >= 0 && b.focus < int(d.items.size())) {
    if (QWidget *w = focus_target(d.items[size_t(b.focus)])) w->setFocus(Qt::OtherFocusReason);
  }
  d.focus_shown = b.focus;
}

void qd_install() {
  if (const char *pages = getenv("XED_DIALOG_PAGES"); pages && *pages) return;
  dy_viewhook = hook;
  dy_viewread = qd_read;
}

qdbox *qd_box(int h) {
  auto it = shown.find(h);
  return it == shown.end() ? nullptr : it->second.data();
}

QImage qd_shot() {
  QWidget *win = qw_layer->win_;
  QRect all(QPoint(0, 0), win->size());
  constexpr int BAR = 20;  // a caption strip drawn over each box: no frame of its own here
  std::vector<std::pair<QRect, qdbox *>> boxes;
  for (auto &kv : shown) {
    qdbox *d = kv.second.data();
    if (!d || !d->isVisible()) continue;
    QRect r(d->geometry().topLeft() - win->geometry().topLeft(), d->size());
    boxes.push_back({r, d});
    all |= r.adjusted(-1, -BAR, 1, 1);
  }
  QImage img(all.size(), QImage::Format_RGB32);
  img.fill(QColor(96, 96, 96));
  QPainter p(&img);
  p.translate(-all.topLeft());
  p.drawImage(QPoint(0, 0), win->grab().toImage());
  for (auto &[r, d] : boxes) {
    QRect bar(r.left() - 1, r.top() - BAR, r.width() + 2, BAR);
    p.fillRect(bar, d->palette().color(QPalette::Highlight));
    p.setPen(d->palette().color(QPalette::HighlightedText));
    p.drawText(bar.adjusted(6, 0, 0, 0), Qt::AlignVCenter | Qt::AlignLeft, d->windowTitle());
    p.drawImage(r.topLeft(), d->grab().toImage());
    p.setPen(d->palette().color(QPalette::Dark));
    p.drawRect(r.adjusted(-1, -BAR, 0, 0));
  }
  return img;
}
