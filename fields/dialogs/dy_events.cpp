// What the user does in a box, as the event texts the box's callback macro
// is called with: the table of macro boxes, the queue of events waiting for
// their callback, the double-click timing, and the hand-out of a long macro.
#include "fields/dialogs/dy_int.h"
#include "fields/fields.h"
#include "fields/fs_int.h"
#include "fields/plat.h"

#include <cstdio>
#include <deque>
#include <map>

int (*dy_callhook)(const std::string &macro, const std::string &event) = nullptr;
bool dy_noscreen = false;

namespace {

struct macro_box {
  std::string macro;  // the callback macro; empty: nobody listens
  std::string owner;  // the program that made the box
};
std::map<int, macro_box> macros;  // macro boxes by handle

struct pending {
  int handle;        // the box
  std::string text;  // the event text
};
std::deque<pending> queue;  // events waiting for their callback

// The last click on a list line, for the double-click test.
struct click {
  int handle = 0, list = 0, line = -1;
  long long ms = 0;
};
click last_click;

constexpr long long DOUBLE_MS = 301;  // a second click sooner than this is a double click

struct key_form {
  char what;        // as dy_key takes it
  const char *fmt;  // the event text
};
constexpr key_form key_forms[] = {
    {'E', " %d return"}, {'F', " %d F%d"}, {'L', " %d L%d"},
    {'R', " %d R%d"},    {'^', " %d ^%c"}, {'f', " %d focus"},
};

std::string fmt(const char *f, int a, int b = 0, int c = 0) {
  char buf[64];
  snprintf(buf, sizeof buf, f, a, b, c);
  return buf;
}

int pend(int stage, int *value) {
  if (stage != FS_PEND_DIALOG || queue.empty()) return -1;
  *value = queue.front().handle;
  return DY_READCODE;
}

}  // namespace

void dy_attach(int h, const std::string &macro, const std::string &owner) {
  macros[h] = macro_box{macro, owner};
}

void dy_forget(int h) {
  macros.erase(h);
  std::erase_if(queue, [h](const pending &p) { return p.handle == h; });
  if (last_click.handle == h) last_click = click{};
}

void dy_event(int h, const std::string &text) {
  dy_box *b = dy_find(h);
  auto m = macros.find(h);
  if (!b || b->opts.grab == DY_DISPLAY || m == macros.end() || m->second.macro.empty()) return;
  queue.push_back(pending{h, text});
  if (!as_pendhook) as_pendhook = pend;
  aspend();
}

void dy_button(int h, int n) {
  if (dy_box *b = dy_find(h)) {
    b->answer = n;
    if (b->waited) b->mapped = false;
  }
  dy_event(h, fmt(" %d B%d", h, n));
}

void dy_choice(int h, int n, int selected) { dy_event(h, fmt(" %d MENU%d %d", h, n, selected)); }

void dy_listclick(int h, int n, int line, long long ms) {
  bool twice = last_click.handle == h && last_click.list == n && last_click.line == line &&
               ms - last_click.ms < DOUBLE_MS;
  dy_event(h, fmt(twice ? " %d DSC%d %d" : " %d SC%d %d", h, n, line));
  last_click = twice ? click{} : click{h, n, line, ms};
  dy_box *b = dy_find(h);
  if (b && b->waited && (b->picks || (twice && b->picks2))) {
    b->answer = twice ? DY_PICK2 : DY_PICK;
    b->mapped = false;
  }
}

void dy_key(int h, char what, int n) {
  dy_box *b = dy_find(h);
  if (b && b->waited && b->panel_keys) {
    if (what == 'E') return dy_button(h, 1);
    if ((what == 'F' && n == 3) || (what == '^' && n == 'C')) {
      b->answer = 0;
      b->mapped = false;
      return;
    }
  }
  for (const key_form &k : key_forms)
    if (k.what == what) dy_event(h, fmt(k.fmt, h, n));
}

void dy_escape(dy_box &b) {
  int n = 0;
  for (const dy_item &it : b.items) {
    if (it.kind != DY_KBUTTON) continue;
    n++;
    if (it.text == "Cancel") {
      dy_button(b.handle, n);
      return;
    }
  }
  b.mapped = false;
}

int dy_pending() { return int(queue.size()); }

int dy_deliver() {
  int ran = 0;
  // One at a time, the table looked up afresh: a callback may destroy its
  // box, or any other, and drop their events with it.
  while (!queue.empty()) {
    pending p = queue.front();
    queue.pop_front();
    auto m = macros.find(p.handle);
    if (m == macros.end()) continue;
    std::string macro = m->second.macro;
    ran++;
    if (!dy_callhook || dy_callhook(macro, p.text) < 0) {
      // Told through as_lastmsg only: the caller that ran it has said so.
      as_errno = 1;
      snprintf(as_lastmsg, sizeof as_lastmsg, "dy_dispatch: unable to run the \"%s\" macro",
               macro.c_str());
      // Nobody hears the box: it leaves the screen rather than hold the input.
      if (dy_box *b = dy_find(p.handle)) b->mapped = false;
    }
  }
  return ran;
}

int dy_dispatch() {
  fs_plat *p = fs_layer();
  if (!dy_noscreen && p && fs.started) {
    p->peek();
    // Boxes with controls of their own took their input in the peek.
    if (!dy_viewhook && fs_evpending() && dy_page_top()) dy_page_read();
  }
  return dy_deliver();
}
