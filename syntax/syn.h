// Syntax colouring: the table of rule blocks read from a rule file, and the
// colouring of a file's lines by the block that fits the file. Knows nothing
// of the editor: lines come through syn_lines, colours go out as one byte per
// byte of a line (SYN_NONE for the line's own colour), logical colours 1 to 64.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

constexpr uint8_t SYN_NONE = 255;  // no colour of its own

// ---- colour names ----------------------------------------------------------

// The colour of a name (any abbreviation down to its capitals), 1 to 64, or 0.
int syn_colour(std::string_view name);
const char *syn_colour_name(int colour);  // the name as written in the table, "" for none

// ---- rule blocks -------------------------------------------------------------

enum { SYN_FIRSTLINE = 0, SYN_FILETYPE = 1, SYN_APL = 2 };
enum { SYN_C = 0, SYN_SH, SYN_FORTRAN, SYN_REXX, SYN_LATEX, SYN_APLC, SYN_COBOL, SYN_AUTOIT };
enum { SYN_STR_C = 0, SYN_STR_REXX = 1, SYN_STR_FORTRAN = 2, SYN_STR_NONE = 3, SYN_STR_APL = 4 };

// What a block and its aliases share.
struct syn_tables {
  std::vector<std::pair<std::string, int>> keywords;  // word and colour, in the file's order
  std::unordered_map<std::string, int> first;          // each word's first colour
  std::vector<int> match;                              // colours by bracket depth
  std::vector<int> cpp;                                // colours by preprocessor depth
};

struct syn_block {
  int kind = SYN_FILETYPE;
  std::string name;           // extension, or the text of a first line
  int comment_style = SYN_C;
  int comment_colour = 0;     // 0: the line's own
  int string_style = SYN_STR_NONE;
  int string_colour = 0;
  std::shared_ptr<syn_tables> t = std::make_shared<syn_tables>();
  int icase = 0;              // case ignore
  bool alias = false;         // shares the tables of the block before it
  int variable = 0;           // 0 standard ('.' is part of a word), 1 object
  // Bytes at which something other than a keyword can begin past column 0,
  // and whether keywords can be passed over when only the state is wanted
  // (no comment of the style begins with a word character): set by the load.
  bool special[256] = {};
  bool skip_words = false;
};

extern std::vector<syn_block> syn_table;  // the blocks, in the file's order

// Reads a rule file into a new table. On success answers 0; on an error the
// table is empty, `err` holds the message and `line` the line (0 when the
// file could not be read at all).
int syn_load(const std::string &path, std::string &err, int &line);
// The same from text already read (tests, the shipped defaults).
int syn_parse(std::string_view text, const std::string &path, std::string &err, int &line);
// The block for a file: its name, its first line, whether it is in APL mode,
// whether names compare ignoring case. -1 when none fits.
int syn_choose(const std::string &fname, std::string_view firstline, bool apl, bool icase);

// ---- colouring -------------------------------------------------------------

// The state that crosses line ends: an open comment and its nesting, the
// bracket depths of (), [] and {}, and the preprocessor depth.
struct syn_state {
  int32_t comment = 0;  // nesting of an open comment, 0 none
  int32_t depth[3] = {-1, -1, -1};
  int32_t cpp = -1;
  bool operator==(const syn_state &o) const {
    return comment == o.comment && depth[0] == o.depth[0] && depth[1] == o.depth[1] &&
           depth[2] == o.depth[2] && cpp == o.cpp;
  }
};

// Colours one line from the state at its start (colours may be null: the
// state only) and answers the state at its end. `out` has n bytes.
syn_state syn_line(const syn_block &b, const char *text, int32_t n, syn_state st, uint8_t *out);

// Where the lines of a file come from.
struct syn_lines {
  virtual ~syn_lines() = default;
  virtual int32_t count() const = 0;
  virtual std::string_view line(int32_t i) const = 0;
};

// A file's colours, worked out as far as they are asked for: the state at
// every 256th line is kept, so a line's colours cost at most 256 lines of
// scanning, and an edit makes only the states after it stale. The colours
// are those of one pass over the whole file from its top.
class syn_colouring {
 public:
  void reset();                      // forget all: another block, rules changed
  void changed(int32_t line);        // the file changed at this line or after
  // Colours of line i (its bytes) into out; false when the block is none.
  bool colours(const syn_block &b, const syn_lines &f, int32_t i, std::vector<uint8_t> &out);
  int32_t known() const { return int32_t(marks_.size()); }  // states kept
  // The state line i starts in.
  syn_state state_at(const syn_block &b, const syn_lines &f, int32_t i);

 private:
  std::vector<syn_state> marks_;     // state at line k * 256, for k < size
  int32_t last_line_ = -1;           // the line whose end state is below
  syn_state last_end_;               // that line's end state: the next line's start
};
