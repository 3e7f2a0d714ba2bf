// The file list in the window, with the whole editor behind it: the shipped
// menu bar's List menu chosen as the user would, while the list's own read
// waits, and what the list and the editor then show.
#include "tests/unit/window/win_start.h"

#include "commands/commands.h"
#include "flist/flist.h"
#include "session/xed.h"
#include "session/xfkeys.h"
#include "session/xfpage.h"

#include <QAction>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QMenuBar>
#include <QTimer>
#include <fstream>
#include <functional>
#include <sys/time.h>
#include <unistd.h>

namespace {

// The item of the menu bar titled `title`, in any of its menus.
QAction *item(const char *title) {
  for (QAction *m : qw_layer->win_->menuBar()->actions())
    if (m->menu())
      for (QAction *a : m->menu()->actions())
        if (a->text() == title) return a;
  return nullptr;
}

// The names the list's lines show, first word of each, from the third row
// down to the first empty one.
std::vector<std::string> listed() {
  std::vector<std::string> out, rows = fs_rows();
  for (size_t r = 2; r < rows.size() && !rows[r].empty(); r++) {
    std::string w = rows[r].substr(rows[r].find_first_not_of(' '));
    out.push_back(w.substr(0, w.find_first_of(' ')));
  }
  return out;
}

class FlistWindow : public ::testing::Test {
 protected:
  std::string dir, old;
  void SetUp() override {
    win_start();
    char t[] = "/tmp/xedflwinXXXXXX";
    ASSERT_NE(mkdtemp(t), nullptr);
    char buf[4096];
    dir = realpath(t, buf);
    old = getcwd(buf, sizeof buf);
    const std::pair<const char *, size_t> files[] = {{"mid.b", 20}, {"big.c", 30}, {"small.a", 10}};
    for (const auto &[name, size] : files) std::ofstream(dir + "/" + name) << std::string(size, 'x');
    ASSERT_EQ(chdir(dir.c_str()), 0);
    char prog[] = "xed";
    char *argv[] = {prog, nullptr};
    ASSERT_EQ(fsinit(1, argv, qw_layer), 1);
    qw_layer->show(1);
    // The list wants 50 columns and 10 lines at least.
    qw_layer->size(24, 80);
    QElapsedTimer clock;
    clock.start();
    while (clock.elapsed() < 150) QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
    fsresize();
    fsinit2();
    // The editor's tables as the program starts them.
    cmd_init();
    xfsession_reset();
    xfkeys_init();
    xfrexx_init();
    xfdialog_init();
    xfcmdline("synonym quit 4 command aquit");
    xfgeom(true);
    std::vector<std::string> errors;
    auto m = fs_menuread(XED_MENU, "", errors);
    ASSERT_TRUE(m);
    EXPECT_TRUE(errors.empty());
    fs_menuset(0, std::move(m));
  }
  void TearDown() override {
    fs_menuset(0, nullptr);
    qw_layer->size(10, 40);
    fsend();
    if (chdir(old.c_str()) != 0) ADD_FAILURE() << "back to " << old;
    (void)!system(("rm -rf '" + dir + "'").c_str());
  }
};

// The steps run one a tick of the toolkit's clock while the editor reads:
// each waits for its condition, acts, and hands over to the next. A run that
// stalls is ended after some seconds so that the list's read comes back.
struct steps {
  struct step {
    std::function<bool()> ready;  // the screen is as the step wants it
    std::function<void()> act;
  };
  std::vector<step> all;
  size_t next = 0;
  int ticks = 0;
  QTimer timer;
  void start() {
    QObject::connect(&timer, &QTimer::timeout, [this] {
      if (++ticks > 200) {  // some 20 seconds: give up, the list ends
        timer.stop();
        ADD_FAILURE() << "stalled before step " << next;
        fl_end_level = fl_switch_back = true;
        qw_post(FSK_MENUBAR, 0, 0, 0, 0, false);
        return;
      }
      if (next < all.size() && all[next].ready()) all[next++].act();
    });
    timer.start(100);
  }
};

bool on_list() { return fs_curpage() == FL_PAGE && !fl_lay.rows.empty(); }

TEST_F(FlistWindow, ListMenuSortsWritesTheListAndIsRefusedInTheEditor) {
  std::vector<std::string> sorted, written, edited_before, edited_after;
  std::string refusal, shown_file;
  steps s;
  auto choose = [](const char *title) {
    QAction *a = item(title);
    ASSERT_NE(a, nullptr) << title;
    a->trigger();
  };
  auto text = [] {
    std::vector<std::string> v;
    for (int32_t i = 0; xf && i < xf->nbli(); i++) v.emplace_back(xf->lines[i].text, size_t(xf->lines[i].len));
    return v;
  };
  s.all = {
      {on_list, [&] { choose("Sort by size, reversed"); }},
      {[] { return on_list() && fl_levels.back().sort == (FL_BYSIZE | FL_REVERSED); },
       [&] {
         sorted = listed();
         choose("List into flist.file");
       }},
      {[] { return fs_curpage() == 0 && nbfiles() > 0; },
       [&] {
         shown_file = xf->fname;
         edited_before = text();
         std::ifstream in("flist.file");
         for (std::string l; std::getline(in, l);) written.push_back(l);
         xv->msgs.clear();
         choose("Sort by size");
       }},
      {[] { return xv && !xv->msgs.empty(); },
       [&] {
         refusal = xv->msgs.back();
         edited_after = text();
         choose("Close");
       }},
      {on_list, [&] { choose("Close this list"); }},
  };
  s.start();
  cmd_rc = 0;
  xfcom2("flist");
  s.timer.stop();
  EXPECT_EQ(s.next, s.all.size());
  EXPECT_TRUE(fl_levels.empty());
  EXPECT_EQ(sorted, (std::vector<std::string>{"..", "big", "mid", "small"}));
  EXPECT_EQ(shown_file, dir + "/flist.file");
  // The parent entry stands for the folder above.
  const std::vector<std::string> paths = {dir.substr(0, dir.rfind('/')), dir + "/big.c", dir + "/mid.b",
                                          dir + "/small.a"};
  EXPECT_EQ(written, paths);
  EXPECT_EQ(edited_before, paths);
  EXPECT_EQ(refusal, ".... Only in a file list: Sort by SIZE");
  EXPECT_EQ(edited_after, paths) << "the file was not sorted";
}

}  // namespace
