// Menus, tool bar and scroll bar of the window. The menus are built from the
// trees the field manager keeps; a choice only posts its id. The tool bar's
// eighteen buttons are fixed; their pictures are files shipped with the
// program, and drawn here when a file is missing.
#include "fields/plat_qt/qt_window.h"
#include "platform/platform.h"
#include <QAction>
#include <QLayout>
#include <QPixmap>
#include <QScreen>
#include <QGuiApplication>
#include <algorithm>
#include <cstdint>
#include <unistd.h>

namespace {

struct button {
  const char *tip;     // the tooltip, in position order
  const char *file;    // its picture among the shipped ones
  const char *symbol;  // what the picture drawn in its place shows
  QRgb colour;         // in this colour
};
constexpr button buttons[] = {
    {"Quit", "quit", "\u2715", 0xc00000},      {"New", "new", "\u2795", 0x006000},
    {"Open", "open", "\u21e7", 0x806000},      {"Save", "save", "\u2193", 0x000080},
    {"File", "file", "\u21d3", 0x000080},      {"Cut to Clipboard", "cut", "\u2702", 0x404040},
    {"Copy to Clipboard", "copy", "\u2398", 0x404040},
    {"Paste from Clipboard", "paste", "\u2399", 0x404040},
    {"Overlay from Clipboard", "overlay", "\u25a3", 0x404040},
    {"Upper Selection", "upper", "A", 0x000000}, {"Lower Selection", "lower", "a", 0x000000},
    {"Left Shift from Selection", "lshift", "\u21e4", 0x004080},
    {"Right Shift from Selection", "rshift", "\u21e5", 0x004080},
    {"Print", "print", "\u2399", 0x202020},     {"Undo", "undo", "\u21b6", 0x600060},
    {"Redo", "redo", "\u21b7", 0x600060},      {"Find", "find", "\u2192", 0x006060},
    {"Find UP", "findup", "\u2191", 0x006060},
};
static_assert(sizeof buttons / sizeof buttons[0] == 18, "eighteen tool bar buttons");
constexpr int NBUTTONS = int(sizeof buttons / sizeof buttons[0]);

// A picture drawn from a symbol of the font, for a button whose file is
// missing or unreadable.
QPixmap drawn(const button &b, QSize size) {
  QPixmap pm(size);
  pm.fill(Qt::transparent);
  QPainter p(&pm);
  p.setRenderHint(QPainter::Antialiasing);
  QFont f = p.font();
  f.setPixelSize(size.height() - 2);
  f.setBold(true);
  p.setFont(f);
  p.setPen(QColor::fromRgb(b.colour));
  p.drawText(QRect(QPoint(0, 0), size), Qt::AlignCenter, QString::fromUtf8(b.symbol));
  return pm;
}

// The shipped picture, grown in whole pixels for large screens so that it
// stays sharp.
QPixmap picture(const button &b, QSize size, const std::string &dir) {
  QImage img(QString::fromStdString(dir + b.file + ".png"));
  if (img.isNull()) return drawn(b, size);
  if (img.size() != size) img = img.scaled(size, Qt::IgnoreAspectRatio, Qt::FastTransformation);
  return QPixmap::fromImage(img);
}

// Beside the program as built, then as installed.
std::string shippedicons() {
  std::string exe = pl_exedir();
  for (const char *rel : {"share/vorta/icons/", "../share/vorta/icons/"})
    if (access((exe + rel).c_str(), R_OK) == 0) return exe + rel;
  return "";
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

bool qtplat::popup(int x, int y) {
  // Never exec(): the menu runs in the read's own wait.
  if (popup_) popup_->popup(grid_->mapToGlobal(QPoint(x, y)));
  return popup_ != nullptr;
}

bool qtplat::fieldmenu(const fs_fieldmenu &m, int x, int y) {
  // Built anew each time: a field's menu is a few items, and may have been
  // redefined since it was last shown.
  if (fieldmenu_) fieldmenu_->deleteLater();
  fieldmenu_ = new QMenu(win_);
  for (size_t i = 0; i < m.titles.size(); i++) {
    int id = m.first + int(i);
    QObject::connect(fieldmenu_->addAction(QString::fromUtf8(m.titles[i].c_str())), &QAction::triggered,
                     [id] { qw_post(FSK_MENUBAR, id, 0, 0, 0, false); });
  }
  fieldmenu_->popup(grid_->mapToGlobal(QPoint(x, y)));
  return true;
}

void qtplat::toolicons() {
  if (!tb_) return;
  if (icondir_.empty()) icondir_ = shippedicons();
  QSize size = tb_->iconSize();
  QList<QAction *> acts = tb_->actions();
  for (int i = 0; i < NBUTTONS && i < int(acts.size()); i++)
    acts[i]->setIcon(QIcon(picture(buttons[i], size, icondir_)));
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
    for (int i = 0; i < NBUTTONS; i++) {
      QAction *a = tb_->addAction(buttons[i].tip);
      a->setToolTip(buttons[i].tip);
      QObject::connect(a, &QAction::triggered, [i] { qw_post(FSK_TOOLBAR, i, 0, 0, 0, false); });
    }
    toolicons();
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
