// Fonts of the window: a name face%style%width%height made into a font whose
// cells are width by height pixels. A face that is not installed and is one
// of the names profiles carry from elsewhere becomes the system's fixed-pitch
// face (fontconfig's "monospace"); any other missing face is an error.
#include "fields/plat_qt/qt_int.h"
#include <QFontDatabase>
#include <QFontMetrics>

namespace {

// Faces that stand for "the usual fixed-pitch font" wherever they come from.
constexpr const char *standins[] = {"Courier New", "Lucida Console", "Courier", "Fixedsys",
                                    "Terminal", "monospace"};

struct sizerow {
  int min_w, min_h;  // the screen is wider and taller than this
  const char *font;  // the text font
};
constexpr sizerow bysize[] = {
    {1024, 768, "Courier New%*%11%23"},
    {800, 600, "Courier New%*%10%18"},
    {0, 0, "Courier New%*%7%14"},
};

bool installed(const QString &face) {
  for (const QString &f : QFontDatabase::families())
    if (f.compare(face, Qt::CaseInsensitive) == 0) return true;
  return false;
}

bool standin(const QString &face) {
  bool is = face.isEmpty();
  for (const char *s : standins) is = is || face.compare(s, Qt::CaseInsensitive) == 0;
  return is;
}

}  // namespace

std::string qw_fontdefault(int sw, int sh) {
  for (const sizerow &r : bysize)
    if (sw > r.min_w && sh > r.min_h) return r.font;
  return bysize[2].font;
}

bool qw_facefound(const std::string &face) {
  QString f = QString::fromStdString(face);
  return standin(f) || installed(f);
}

bool qw_font(const std::string &name, QFont &out) {
  qw_fontname n;
  if (!qw_fontparse(name, n)) return false;
  QString face = QString::fromStdString(n.face);
  QFont f;
  if (installed(face) && !face.isEmpty()) {
    f = QFont(face);
  } else if (standin(face)) {
    f = QFontDatabase::systemFont(QFontDatabase::FixedFont);
  } else {
    return false;
  }
  f.setStyleHint(QFont::Monospace, QFont::PreferDefault);
  f.setFixedPitch(true);
  f.setKerning(false);
  QString style = QString::fromStdString(n.style);
  f.setBold(style.contains("Bold", Qt::CaseInsensitive));
  f.setItalic(style.contains("Italic", Qt::CaseInsensitive) ||
              style.contains("Oblique", Qt::CaseInsensitive));
  // The largest size whose characters fit the cell asked for.
  int px = n.height;
  for (; px > 4; px--) {
    f.setPixelSize(px);
    QFontMetrics fm(f);
    if (fm.height() <= n.height && fm.horizontalAdvance(QLatin1Char('M')) <= n.width) break;
  }
  f.setPixelSize(px);
  out = f;
  return true;
}
