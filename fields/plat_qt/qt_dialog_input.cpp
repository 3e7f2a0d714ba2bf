// What the user does in a box shown as a window: each control's signal
// copies its value into the model and, where the field pages would report
// something, reports the same event text; the keys of the box (Enter,
// Escape, function keys, Ctrl) and clicks on list lines. Handlers only
// change the model, queue events and wake the read; callbacks run later,
// from the read, never inside the toolkit.
#include "fields/plat_qt/qt_dialog.h"
#include "fields/plat_qt/qt_window.h"
#include "platform/platform.h"

#include <QAction>
#include <QComboBox>
#include <QDateTime>
#include <QGuiApplication>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollBar>
#include <cctype>

namespace {

constexpr const char *ITEM = "dy_item";  // property: the item a control shows
constexpr const char *ROWS = "dy_rows";  // property: the item whose list lines a viewport shows

long long now_ms() { return QDateTime::currentMSecsSinceEpoch(); }

std::string bytes(const QString &s) {
  QByteArray u = s.toUtf8();
  return std::string(u.constData(), size_t(u.size()));
}

// After the user acted: a box the model took off the screen leaves it, and
// the read waiting in the toolkit looks at what came.
void woke(qdbox &d) {
  if (d.model && !d.model->mapped) d.hide();
  if (qw_layer) qw_layer->mark(0);
}

int item_of(QObject *o, const char *prop) {
  QVariant v = o ? o->property(prop) : QVariant();
  return v.isValid() ? v.toInt() : -1;
}

void list_click(qdbox &d, int i, int row) {
  if (!d.model || row < 0) return;
  dy_listclick(d.model->handle, d.items[size_t(i)].number, row + 1, now_ms());
  woke(d);
}

// Right click in a list: its line or all of it to the clipboard.
void list_menu(qdbox &d, QListWidget *l, const QPoint &at) {
  auto *m = new QMenu(&d);
  m->setAttribute(Qt::WA_DeleteOnClose);
  QListWidgetItem *under = l->itemAt(at);
  QString line = under ? under->text() : QString();
  QAction *one = m->addAction("Copy item");
  one->setEnabled(under != nullptr);
  QObject::connect(one, &QAction::triggered, l, [line] { pl_clip_set({{line.toStdString()}}); });
  QObject::connect(m->addAction("Copy all"), &QAction::triggered, l, [l] {
    pl_clip c;
    for (int k = 0; k < l->count(); k++) c.lines.push_back(l->item(k)->text().toStdString());
    pl_clip_set(c);
  });
  m->popup(l->viewport()->mapToGlobal(at));
}

// A key of the box; true when it was the box's and not the control's.
bool box_key(qdbox &d, QObject *o, const QKeyEvent &e) {
  qk_key k;
  if (!d.model || !qk_map(e, k)) return false;
  int h = d.model->handle;
  bool ctrl = k.mods & FSM_CTRL;
  if (k.code == 27) {
    d.reject();
  } else if (k.code > FSK_F0 && k.code <= FSK_F0 + 24) {
    dy_key(h, 'F', k.code - FSK_F0);
  } else if (ctrl && k.code > ' ' && k.code < 256) {
    dy_key(h, '^', toupper(k.code));
  } else if (k.code == '\r') {
    if (dynamic_cast<QPlainTextEdit *>(o)) return false;  // a new line of a multi-line input
    if (auto *b = dynamic_cast<QPushButton *>(o)) {
      b->click();
      return true;
    }
    dy_key(h, 'E', 0);
  } else {
    if (k.code == ' ')
      if (auto *l = dynamic_cast<QListWidget *>(o)) list_click(d, item_of(o, ITEM), l->currentRow());
    return false;
  }
  woke(d);
  return true;
}

}  // namespace

void qd_wire(qdbox &d, int i) {
  qd_item &v = d.items[size_t(i)];
  QObject *ctx = &d;
  auto watch = [&d, i](QWidget *w) {
    w->setProperty(ITEM, i);
    w->installEventFilter(&d);
  };
  if (v.main) watch(v.main);
  for (QAbstractButton *t : v.toggles) watch(t);
  auto model_item = [&d, i]() -> dy_item * {
    return d.model ? &d.model->items[size_t(i)] : nullptr;
  };
  if (auto *b = dynamic_cast<QPushButton *>(v.main)) {
    QObject::connect(b, &QPushButton::clicked, ctx, [&d, i] {
      if (!d.model) return;
      dy_button(d.model->handle, d.items[size_t(i)].number);
      woke(d);
    });
  } else if (auto *e = dynamic_cast<QLineEdit *>(v.main)) {
    QObject::connect(e, &QLineEdit::textEdited, ctx, [model_item](const QString &s) {
      if (dy_item *it = model_item()) it->text = bytes(s);
    });
  } else if (auto *m = dynamic_cast<QPlainTextEdit *>(v.main)) {
    QObject::connect(m, &QPlainTextEdit::textChanged, ctx, [model_item, m] {
      if (dy_item *it = model_item()) it->text = bytes(m->toPlainText());
    });
  } else if (auto *c = dynamic_cast<QComboBox *>(v.main)) {
    QObject::connect(c, &QComboBox::activated, ctx, [&d, i, model_item](int index) {
      dy_item *it = model_item();
      if (!it || index < 0) return;
      it->selected = index + 1;
      dy_choice(d.model->handle, d.items[size_t(i)].number, it->selected);
      woke(d);
    });
  } else if (auto *l = dynamic_cast<QListWidget *>(v.main)) {
    l->viewport()->setProperty(ROWS, i);
    l->viewport()->installEventFilter(&d);
    QObject::connect(l, &QListWidget::itemSelectionChanged, ctx, [model_item, l] {
      dy_item *it = model_item();
      if (!it) return;
      it->on.assign(it->lines.size(), 0);
      for (QListWidgetItem *row : l->selectedItems())
        if (int k = l->row(row); k >= 0 && k < int(it->on.size())) it->on[size_t(k)] = 1;
    });
    QObject::connect(l, &QListWidget::currentRowChanged, ctx, [model_item](int row) {
      if (dy_item *it = model_item(); it && row >= 0) it->cursor = row;
    });
    QObject::connect(l->verticalScrollBar(), &QScrollBar::valueChanged, ctx,
                     [&d, i, model_item](int top) {
                       if (dy_item *it = model_item()) it->top = d.items[size_t(i)].top = top;
                     });
    QObject::connect(l, &QListWidget::customContextMenuRequested, ctx,
                     [&d, l](const QPoint &at) { list_menu(d, l, at); });
  }
  for (size_t t = 0; t < v.toggles.size(); t++) {
    QObject::connect(v.toggles[t], &QAbstractButton::clicked, ctx, [&d, t, model_item](bool on) {
      dy_item *it = model_item();
      if (!it || t >= it->on.size()) return;
      // An exclusive group's toggle is turned on by a click, never off.
      if (it->exclusive) std::fill(it->on.begin(), it->on.end(), 0);
      it->on[t] = it->exclusive || on ? 1 : 0;
      qd_sync(d);
    });
  }
}

void qdbox::reject() {
  if (!model) return QDialog::reject();
  dy_escape(*model);
  woke(*this);
}

bool qdbox::event(QEvent *e) {
  if (e->type() == QEvent::WindowActivate && model && model->opts.grab != DY_DISPLAY) {
    dy_key(model->handle, 'f', 0);
    woke(*this);
  }
  return QDialog::event(e);
}

bool qdbox::eventFilter(QObject *o, QEvent *e) {
  switch (e->type()) {
    case QEvent::KeyPress:
      return box_key(*this, o, static_cast<QKeyEvent &>(*e));
    case QEvent::FocusIn:
      if (model && item_of(o, ITEM) >= 0) model->focus = focus_shown = item_of(o, ITEM);
      return false;
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick: {
      auto &m = static_cast<QMouseEvent &>(*e);
      int i = item_of(o, ROWS);
      if (i >= 0 && m.button() == Qt::LeftButton) {
        auto *l = static_cast<QListWidget *>(items[size_t(i)].main);
        list_click(*this, i, l->indexAt(m.position().toPoint()).row());
      }
      return false;
    }
    default:
      return false;
  }
}

int qd_read() {
  if (!qw_layer) return 0;
  QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
  QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  if (pl_endsig()) {
    qw_layer->lost();
    return 0;
  }
  return 1;
}
