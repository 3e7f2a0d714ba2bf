// External tools: shell windows (a command's output collected in a file of
// the ring while the editor goes on), filters (lines through a command), and
// the compile rules that find error lines in a compiler's output.
#pragma once

#include <string>
#include <vector>

// ---- shell windows --------------------------------------------------------------

// The name of the file a shell window collects into: by the window name
// ("history", "compile", "@messages", anything else numbered 1.xshell to
// max.xshell) and the source file's name. `taken(name)` tells whether a
// numbered name is in use; `dir` is where numbered files go ("" for the
// session's own folder), `msgdir` the MESsagesdir folder or "".
std::string tl_outname(const std::string &source, const std::string &window, const std::string &dir,
                       const std::string &msgdir, int max, bool (*taken)(const std::string &));

// Runs `command` in a shell window: the output file is made afresh in the
// current view with the command as its first line, and the output follows.
// With `wait` (batch, a macro, a compile) the call returns when the child
// has ended; otherwise the read loop takes the output as it comes. 0, or 1
// after a message when the child could not be started.
int tl_xshell(const std::string &command, const std::string &source, const std::string &window, bool wait);
// Children of shell windows still running.
int tl_running();
// Ends every child still running (CLOSEConsole); how many were ended.
int tl_close_all();

// Runs a command on the user's terminal (or with no pipes where there is
// none) and waits: 0 with its exit status, or the errno value of the start.
int tl_foreground(const std::string &command, bool pause, int &status);

// ---- the macro console ----------------------------------------------------------

// Routes the interpreter's console (SAY, traces, processes, console reads)
// while the page is up: to the terminal, taken from the page on the first
// output, or for a lone short SAY line to the message line.
void tl_console_init();
// Around each macro run from the editor; the outermost end gives the
// terminal back after the user has read it.
void tl_console_begin();
void tl_console_end();
// Whether a macro's output has the terminal now.
bool tl_console_given();
// "[Press Enter to return to the editor]" and the wait for it.
void tl_console_pause();

// ---- filters --------------------------------------------------------------------

enum { TL_FILTER_OK = 0, TL_FILTER_PIPE = 63, TL_FILTER_START = 64, TL_FILTER_TIMEOUT = 65,
       TL_FILTER_FAILED = 66 };
// Gives `in` to the command, one line a line, and collects its output lines.
// `timeout_ms` 0 waits for ever. One of the TL_FILTER_ codes: a command that
// exits with a non-zero status or is killed is a failure, and `out` is then
// not to be used.
int tl_filter(const std::string &command, const std::vector<std::string> &in, long timeout_ms,
              std::vector<std::string> &out);

// ---- compile rules --------------------------------------------------------------

struct tl_rule {
    std::string type;               // the source's extension it serves ("" none)
    int offset = 1;                 // which run of digits is the line number; 0 before the match
    bool nosource = false;          // the line names its own file
    std::vector<std::string> pats;  // a chain of regular expressions
    int line = 0;                   // line of the head in the rule file
};

// Reads a rule file. 0 with `rules` replaced; 1 when it cannot be opened
// (`rules` kept); 2 with `err` the message of the first bad line (a bad
// head keeps `rules`; a bad pattern empties it) and `detail` the
// pattern's own error, if any.
int tl_rules_read(const std::string &path, std::vector<tl_rule> &rules, std::string &err,
                  std::string &detail);
// Where vorta_compile.rules is looked for, in order.
std::vector<std::string> tl_rules_places(const std::string &home, const std::string &xhome);

// What a rule found in an output line.
struct tl_hit {
    long line = -1;    // the line number, -1 when the line gives none
    std::string file;  // the file named by a nosource rule, "" the compiled one
};
// Tests one output line against the rules of the source's type, in file
// order: true with `hit` on the first rule whose chain matches.
bool tl_rules_match(const std::vector<tl_rule> &rules, const std::string &type, const std::string &text,
                    tl_hit &hit);

// Shows `lines` in a shell-window file named after the window (the history
// of commands), made afresh in the current view. 0.
int tl_show_lines(const std::string &source, const std::string &window, const std::vector<std::string> &lines);
// Adds `line` at the end of the last history window shown, if it is still
// in the ring; its views at the end follow. Nothing otherwise.
void tl_history_follow(const std::string &line);
