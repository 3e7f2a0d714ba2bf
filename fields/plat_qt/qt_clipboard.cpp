// The window's share of the clipboard: every copy the editor makes also goes
// to the desktop's clipboard, and a paste takes what another program put
// there since. The editor's own copy stays the one that knows a rectangle.
#include "fields/plat_qt/qt_window.h"
#include "platform/platform.h"

#include <QClipboard>
#include <QGuiApplication>

namespace {

QString last_put;  // the text of our last copy, as the desktop got it

// Lines end as on Linux for other programs.
QString as_text(const pl_clip &c) {
  std::string s;
  for (size_t i = 0; i < c.lines.size(); i++) s += (i ? "\n" : "") + c.lines[i];
  return QString::fromStdString(s);
}

void put(const pl_clip &c) {
  last_put = as_text(c);
  QGuiApplication::clipboard()->setText(last_put);
}

// 1 with what another program copied, 0 when the desktop holds nothing
// newer than our own copy.
int get(pl_clip &c) {
  QString t = QGuiApplication::clipboard()->text();
  if (t.isEmpty() || t == last_put) return 0;
  c = pl_clip_split(t.toStdString(), false);
  return 1;
}

}  // namespace

void qw_clipboard_install() {
  pl_clip_system.put = put;
  pl_clip_system.get = get;
}
