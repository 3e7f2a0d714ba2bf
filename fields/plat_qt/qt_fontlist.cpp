// The fixed-pitch families installed, for the editor's font box.
#include "fields/plat_qt/qt_window.h"
#include <QFontDatabase>

bool qtplat::font_families(std::vector<std::string> &out) {
  out.clear();
  for (const QString &f : QFontDatabase::families())
    if (QFontDatabase::isFixedPitch(f)) out.push_back(f.toStdString());
  return true;
}
