// A box as a dialog template: a header, then a record for each control, in
// 16-bit words and dialog units (a character of the dialog font is 4 units
// wide and 8 high). The window layer builds its controls straight from the
// description, so the template is what a box is checked against when it
// looks wrong: with XED_DIALOG_DUMP naming a file, every box made is dumped
// there field by field.
#include "fields/dialogs/dialogs.h"
#include "fields/dialogs/dy_int.h"
#include "fields/fields.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>

namespace {

// Control classes by their atoms.
constexpr uint16_t CLS_BUTTON = 0x80;
constexpr uint16_t CLS_EDIT = 0x81;
constexpr uint16_t CLS_STATIC = 0x82;
constexpr uint16_t CLS_LISTBOX = 0x83;
constexpr uint16_t CLS_COMBOBOX = 0x85;

// Styles: a visible child, and the bits each kind adds.
constexpr uint32_t CHILD = 0x50000000;
constexpr uint32_t TABSTOP = 0x00010000;
constexpr uint32_t VSCROLL = 0x00200000;
constexpr uint32_t BOX_MODELESS = 0x808000D1;
constexpr uint32_t BOX_TITLED = 0x80C800D1;
constexpr uint32_t BOX_FRAMED = 0x00CC0000;
constexpr uint32_t EDIT_STYLE = 0x50810080;
constexpr uint32_t EDIT_MULTILINE = 0x0004;
constexpr uint32_t LIST_NOTIFY = 0x0001;
constexpr uint32_t LIST_MULTIPLE = 0x0008;
constexpr uint32_t BUTTON_GROUPBOX = 0x0007;
constexpr uint32_t BUTTON_CHECKBOX = 0x0003;
constexpr uint32_t BUTTON_RADIO = 0x0009;
constexpr uint32_t COMBO_DROPLIST = 0x0003;

constexpr int UNIT_X = 4;  // dialog units in a character's width
constexpr int UNIT_Y = 8;  // dialog units in a character's height
constexpr uint16_t SUB_IDS = 1000;  // ids of the controls an item adds to its own

int16_t ux(double cols) { return int16_t(std::clamp(cols * UNIT_X, -32768.0, 32767.0)); }
int16_t uy(double lines) { return int16_t(std::clamp(lines * UNIT_Y, -32768.0, 32767.0)); }
int chars(const std::string &s) { return int(s.size()); }

void put_text(std::vector<uint16_t> &w, const std::string &s) {
  const auto *p = reinterpret_cast<const unsigned char *>(s.data());
  long n = long(s.size());
  for (long i = 0; i < n;) {
    uint32_t cp = 0xFFFD;
    int k = fs_utf8_seq(p + i, n - i, cp);
    i += k > 0 ? k : 1;
    if (k <= 0) cp = 0xFFFD;
    if (cp >= 0x10000) {
      w.push_back(uint16_t(0xD800 + ((cp - 0x10000) >> 10)));
      w.push_back(uint16_t(0xDC00 + ((cp - 0x10000) & 0x3FF)));
    } else {
      w.push_back(uint16_t(cp));
    }
  }
  w.push_back(0);
}

void put_long(std::vector<uint16_t> &w, uint32_t v) {
  w.push_back(uint16_t(v & 0xFFFF));
  w.push_back(uint16_t(v >> 16));
}

// The controls of one item: most kinds are one control; a group of toggles
// is a frame with a button per toggle, a choice and a list carry their title
// as a label of their own.
void add_controls(std::vector<dy_tpl_control> &out, const dy_item &it, uint16_t &sub) {
  int right = 0, bottom = 0;
  dy_extent(it, right, bottom);
  auto add = [&](uint16_t cls, uint32_t style, double x, double y, double w, double h, uint16_t id,
                 const std::string &text) {
    out.push_back({style, ux(x), uy(y), ux(w), uy(h), id, cls, text});
  };
  uint16_t id = uint16_t(it.control);
  double w = right - it.x, h = bottom - it.y;
  switch (it.kind) {
    case DY_KLABEL:
      add(CLS_STATIC, CHILD, it.x, it.y, w, h, id, it.text);
      break;
    case DY_KINPUT:
      add(CLS_EDIT, EDIT_STYLE | (it.width > 0 ? 0 : EDIT_MULTILINE), it.x, it.y, w, h, id, it.text);
      break;
    case DY_KBUTTON:
      add(CLS_BUTTON, CHILD | TABSTOP, it.x, it.y, w, h, id, it.text);
      break;
    case DY_KTG:
      add(CLS_BUTTON, CHILD | BUTTON_GROUPBOX, it.x, it.y, w, h, id, it.text);
      for (size_t i = 0; i < it.lines.size(); i++)
        add(CLS_BUTTON, CHILD | TABSTOP | (it.exclusive ? BUTTON_RADIO : BUTTON_CHECKBOX), it.tx[i],
            it.ty[i], 4 + chars(it.lines[i]), 1, sub++, it.lines[i]);
      break;
    case DY_KCH:
      add(CLS_STATIC, CHILD, it.x, it.y, chars(it.text), 1, sub++, it.text);
      add(CLS_COMBOBOX, CHILD | TABSTOP | VSCROLL | COMBO_DROPLIST, it.x + chars(it.text) + 1, it.y,
          w - chars(it.text) - 1, h, id, "");
      break;
    default:
      add(CLS_STATIC, CHILD, it.x, it.y, chars(it.text), 1, sub++, it.text);
      add(CLS_LISTBOX, CHILD | TABSTOP | VSCROLL | LIST_NOTIFY | (it.multiple ? LIST_MULTIPLE : 0), it.x,
          it.y + 1, w, h - 1, id, "");
      break;
  }
}

// The point size and face of the dialog font: "face" or "face%style%width%height".
void font_parts(const std::string &font, uint16_t &point, std::string &face) {
  std::vector<std::string> parts = dy_split(font, '%');
  face = parts[0];
  point = 10;
  if (parts.size() == 4) {
    int h = atoi(parts[3].c_str());
    if (h > 0 && h < 1000) point = uint16_t(h);
  }
}

}  // namespace

dy_tpl dy_template(const dy_box &b) {
  dy_tpl t;
  t.style = b.opts.title.empty() ? BOX_MODELESS : BOX_TITLED;
  if (b.opts.framed) t.style |= BOX_FRAMED;
  t.x = ux(b.opts.x);
  t.y = uy(b.opts.y);
  t.cx = ux(b.cols);
  t.cy = uy(b.lines);
  t.caption = b.opts.title.empty() ? " " : b.opts.title;
  font_parts(dy_font(), t.point, t.face);
  uint16_t sub = SUB_IDS;
  for (const dy_item &it : b.items) add_controls(t.controls, it, sub);

  std::vector<uint16_t> &w = t.words;
  put_long(w, t.style);
  put_long(w, 0);  // extended style
  w.push_back(uint16_t(t.controls.size()));
  for (int16_t v : {t.x, t.y, t.cx, t.cy}) w.push_back(uint16_t(v));
  w.push_back(0);  // no menu
  w.push_back(0);  // the standard class
  put_text(w, t.caption);
  w.push_back(t.point);
  put_text(w, t.face);
  for (const dy_tpl_control &c : t.controls) {
    if (w.size() % 2) w.push_back(0);  // records start on 4 bytes
    put_long(w, c.style);
    put_long(w, 0);
    for (int16_t v : {c.x, c.y, c.cx, c.cy}) w.push_back(uint16_t(v));
    w.push_back(c.id);
    w.push_back(0xFFFF);  // the class by its atom
    w.push_back(c.cls);
    put_text(w, c.text);
    w.push_back(0);  // no creation data
  }
  return t;
}

std::string dy_template_dump(const dy_tpl &t) {
  std::string out;
  char line[600];
  auto add = [&](const char *fmt, auto... v) {
    snprintf(line, sizeof line, fmt, v...);
    out += line;
  };
  add("***** DLGTEMPLATE *****\n");
  add("lpdt->style = 0x%X\n", unsigned(t.style));
  add("lpdt->cdit  = %d\n", int(t.controls.size()));
  add("lpdt->x     = %d\n", int(t.x));
  add("lpdt->y     = %d\n", int(t.y));
  add("lpdt->cx    = %d\n", int(t.cx));
  add("lpdt->cy    = %d\n", int(t.cy));
  add("caption     = \"%.500s\"\n", t.caption.c_str());
  add("font        = %d \"%.500s\"\n", int(t.point), t.face.c_str());
  add("size        = %d bytes\n", int(t.words.size() * 2));
  int n = 0;
  for (const dy_tpl_control &c : t.controls) {
    add("***** DLGITEMTEMPLATE %d *****\n", ++n);
    add("lpdit->style = 0x%X\n", unsigned(c.style));
    add("lpdit->x     = %d\n", int(c.x));
    add("lpdit->y     = %d\n", int(c.y));
    add("lpdit->cx    = %d\n", int(c.cx));
    add("lpdit->cy    = %d\n", int(c.cy));
    add("lpdit->id    = %d\n", int(c.id));
    add("class        = 0x%04X\n", unsigned(c.cls));
    add("text         = \"%.500s\"\n", c.text.c_str());
  }
  return out;
}

void dy_template_trace(const dy_box &b) {
  const char *path = getenv("XED_DIALOG_DUMP");
  if (!path || !*path) return;
  // Beside whatever the user keeps there: never through a link, never
  // readable by others.
  int fd = open(path, O_WRONLY | O_APPEND | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0600);
  if (fd < 0) return;
  std::string text = dy_template_dump(dy_template(b));
  for (size_t done = 0; done < text.size();) {
    ssize_t k = write(fd, text.data() + done, text.size() - done);
    if (k < 0 && errno == EINTR) continue;
    if (k <= 0) break;
    done += size_t(k);
  }
  close(fd);
}
