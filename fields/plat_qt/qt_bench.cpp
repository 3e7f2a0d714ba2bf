// Measurement and pictures of the running window, for bench/window.sh and
// the documentation. When XED_WINDOW_BENCH names a file, the window types
// and pages by itself (500 keys, each sent only once the previous one has
// been painted), times each key from its sending to the end of its paint,
// times full repaints, writes the figures and ends the session. When
// XED_WINDOW_SHOT names a file, the window's picture is saved there once the
// page is shown, and the session ends.
#include "fields/plat_qt/qt_dialog.h"
#include "fields/plat_qt/qt_window.h"
#include <QElapsedTimer>
#include <QCoreApplication>
#include <QTimer>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <vector>

namespace {

constexpr int KEYS = 500;
constexpr int REPAINTS = 50;

struct run {
  std::string out;            // where the figures go
  QElapsedTimer clock;        // since the last key was sent
  bool waiting = false;       // a key is on its way to the screen
  int sent = 0;               // keys sent
  std::vector<double> keys;   // milliseconds a key
};
run *bench = nullptr;

double pct(std::vector<double> v, double p) {
  if (v.empty()) return 0;
  std::sort(v.begin(), v.end());
  size_t i = std::min(v.size() - 1, size_t(p * double(v.size() - 1) + 0.5));
  return v[i];
}

// Typing, with a page down or up every tenth key.
void sendkey(qtplat *l, int n) {
  int k = Qt::Key_A + n % 26;
  QString text(QChar('a' + n % 26));
  if (n % 10 == 9) {
    k = (n / 10) % 2 ? Qt::Key_PageUp : Qt::Key_PageDown;
    text.clear();
  }
  QKeyEvent p(QEvent::KeyPress, k, Qt::NoModifier, text);
  QKeyEvent r(QEvent::KeyRelease, k, Qt::NoModifier, text);
  QCoreApplication::sendEvent(l->grid_, &p);
  QCoreApplication::sendEvent(l->grid_, &r);
}

void finish(qtplat *l) {
  std::vector<double> full;
  for (int i = 0; i < REPAINTS; i++) {
    QElapsedTimer t;
    t.start();
    // A colour change repaints every cell of the page.
    asfmap(0, 0, 0, i % 2 ? 0 : 8);
    asrefresh();
    l->grid_->repaint();
    full.push_back(double(t.nsecsElapsed()) / 1e6);
  }
  FILE *f = fopen(bench->out.c_str(), "w");
  if (f) {
    fprintf(f, "grid %d x %d, cell %d x %d\n", l->lines_, l->cols_, l->img_.width() / l->cols_,
            l->img_.height() / (l->lines_ + 1));
    fprintf(f, "key to paint over %zu keys: median %.3f ms, p99 %.3f ms, max %.3f ms\n",
            bench->keys.size(), pct(bench->keys, 0.5), pct(bench->keys, 0.99),
            pct(bench->keys, 1.0));
    fprintf(f, "full repaint over %d: median %.3f ms, p99 %.3f ms\n", REPAINTS, pct(full, 0.5),
            pct(full, 0.99));
    fclose(f);
  }
  l->ending_ = true;
  l->mark(FS_MARK_GONE);
}

}  // namespace

void qw_bench_start() {
  if (const char *o = getenv("XED_WINDOW_BENCH"); o && *o) {
    bench = new run;
    bench->out = o;
  }
  if (const char *s = getenv("XED_WINDOW_SHOT"); s && *s) {
    std::string path = s;
    QTimer::singleShot(1500, [path] {
      if (!qw_layer) return;
      qd_shot().save(QString::fromStdString(path));
      qw_layer->ending_ = true;
      qw_layer->mark(FS_MARK_GONE);
    });
  }
}

void qw_bench_idle(qtplat *l) {
  if (!bench || bench->waiting || !l->win_->isVisible()) return;
  if (bench->sent >= KEYS) return finish(l);
  bench->waiting = true;
  bench->clock.start();
  sendkey(l, bench->sent++);
}

void qw_bench_painted() {
  if (!bench || !bench->waiting) return;
  bench->waiting = false;
  bench->keys.push_back(double(bench->clock.nsecsElapsed()) / 1e6);
}
