// Menus, tool bar and scroll bar of the window. The menus are built from the
// trees the field manager keeps; a choice only posts its id. The tool bar's
// eighteen buttons are fixed; their pictures are drawn here, small and plain.
#include "fields/plat_qt/qt_window.h"
#include <QAction>
#include <QLayout>
#include <QPixmap>
#include <QScreen>
#include <QGuiApplication>
#include <algorithm>
#include <cstdint>

namespace {

struct button {
  const char *tip;     // the tooltip, in position order
  const char *symbol;  // what the picture shows
  QRgb colour;         // in this colour
};
constexpr button buttons[] = {
    {"Quit", "\u2715", 0xc00000},      {"New", "\u2795", 0x006000},
    {"Open", "\u21e7", 0x806000},      {"Save", "\u2193", 0x000080},
    {"File", "\u21d3", 0x000080},      {"Cut to Clipboard", "\u2702", 0x404040},
    {"Copy to Clipboard", "\u2398", 0x404040},
    {"Paste from Clipboard", "\u2399", 0x404040},
    {"Overlay from Clipboard", "\u25a3", 0x404040},
    {"Upper Selection", "A", 0x000000}, {"Lower Selection", "a", 0x000000},
    {"Left Shift from Selection", "\u21e4", 0x004080},
    {"Right Shift from Selection", "\u21e5", 0x004080},
    {"Print", "\u2399", 0x202020},     {"Undo", "\u21b6", 0x600060},
    {"Redo", "\u21b7", 0x600060},      {"Find", "\u2192", 0x006060},
    {"Find UP", "\u2191", 0x006060},
};
static_assert(sizeof buttons / sizeof buttons[0] == 18, "eighteen tool bar buttons");

// Large screens get the double size.
QPixmap picture(const button &b, bool large) {
  int w = large ? 32 : 16, h = large ? 30 : 15;
  QPixmap pm(w, h);
  pm.fill(Qt::transparent);
  QPainter p(&pm);
  p.setRenderHint(QPainter::Antialiasing);
  QFont f = p.font();
  f.setPixelSize(h - 2);
  f.setBold(true);
  p.setFont(f);
  p.setPen(QColor::fromRgb(b.colour));
  p.drawText(QRect(0, 0, w, h), Qt::AlignCenter, QString::fromUtf8(b.symbol));
  return pm;
}

}  // namespace

QMenu *qtplat::buildmenu(const fs_menu &m, QWidget *parent) {
  auto *menu = new QMenu(parent);
  for (const fs_menu::item &it : m.items) {
    QString t = QString::fromUtf8(it.title.c_str());
    if (it.sub) {
      QMenu *sub = buildmenu(*it.sub, menu);
      sub->setTitle(t);
      menu->addMenu(sub);
      continue;
    }
    int id = it.id;
    QObject::connect(menu->addAction(t), &QAction::triggered,
                     [id] { qw_post(FSK_MENUBAR, id, 0, 0, 0, false); });
  }
  return menu;
}

void qtplat::menus(const fs_menu *bar, const fs_menu *pop) {
  keepgrid([&] {
    QMenuBar *mb = win_->menuBar();
    mb->clear();
    for (QObject *o : mb->children())
      if (qobject_cast<QMenu *>(o)) o->deleteLater();
    if (bar) {
      for (const fs_menu::item &it : bar->items) {
        QString t = QString::fromUtf8(it.title.c_str());
        if (it.sub) {
          QMenu *sub = buildmenu(*it.sub, mb);
          sub->setTitle(t);
          mb->addMenu(sub);
        } else {
          int id = it.id;
          QObject::connect(mb->addAction(t), &QAction::triggered,
                           [id] { qw_post(FSK_MENUBAR, id, 0, 0, 0, false); });
        }
      }
    }
    mb->setVisible(bar != nullptr);
  });
  if (popup_) popup_->deleteLater();
  popup_ = pop ? buildmenu(*pop, win_) : nullptr;
}

void qtplat::popup(int x, int y) {
  // Never exec(): the menu runs in the read's own wait.
  if (popup_) popup_->popup(grid_->mapToGlobal(QPoint(x, y)));
}

int qtplat::toolbar(int on) {
  if (on < 0) return tb_ && tb_->isVisible() ? 1 : 0;
  if (on && !tb_) {
    QSize s = QGuiApplication::primaryScreen()->size();
    bool large = s.width() > 1280 || s.height() > 1024;
    tb_ = new QToolBar(win_);
    tb_->setMovable(false);
    tb_->setFloatable(false);
    tb_->setIconSize(large ? QSize(32, 30) : QSize(16, 15));
    tb_->setVisible(false);
    for (int i = 0; i < int(sizeof buttons / sizeof buttons[0]); i++) {
      QAction *a = tb_->addAction(QIcon(picture(buttons[i], large)), buttons[i].tip);
      a->setToolTip(buttons[i].tip);
      QObject::connect(a, &QAction::triggered, [i] { qw_post(FSK_TOOLBAR, i, 0, 0, 0, false); });
    }
    keepgrid([&] {
      win_->addToolBar(Qt::TopToolBarArea, tb_);
      tb_->setVisible(true);
    });
    return 1;
  }
  if (tb_ && tb_->isVisible() != bool(on)) keepgrid([&] { tb_->setVisible(on != 0); });
  return on ? 1 : 0;
}

void qtplat::scrollbar(long items, long first, long visible) {
  auto cap = [](long v) { return int(std::clamp(v, 0L, long(INT32_MAX))); };
  sb_->blockSignals(true);
  sb_->setRange(0, cap(std::max(0L, items - 1)));
  sb_->setPageStep(std::max(1, cap(visible)));
  sb_->setValue(cap(first));
  sb_->blockSignals(false);
}
