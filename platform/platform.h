// Operating-system services shared by the subsystems: paths of the running
// program, files, processes. Nothing above this layer calls the system
// directly for these.
#pragma once
#include <functional>
#include <string>
#include <vector>

// Directory of the running program, ending in '/', or "" when unknown.
std::string pl_exedir();

// ---- files the program creates beside the user's ------------------------------

#include <sys/types.h>

// Creates `path` as a new file for writing, never through a symbolic link and
// never over an existing name, with `mode` (the umask applies). Returns the
// descriptor, or minus the errno value.
int pl_create_new(const std::string &path, mode_t mode);

// A new file in the directory of `beside`, with a name no one else has:
// `tmpname` receives it. Returns the descriptor, or minus the errno value.
int pl_create_temp(const std::string &beside, mode_t mode, std::string &tmpname);

// All of `n` bytes to `fd`, through short writes and interruptions: 0, or the
// errno value of the write that failed (EIO when one wrote nothing).
int pl_write_all(int fd, const void *data, size_t n);

// The per-user state folder of the program, `$XDG_STATE_HOME/vorta/` or
// `~/.local/state/vorta/`, with a sub-folder when `sub` is not empty, made
// with mode 0700 where missing. "" when it cannot be had, or is not a folder
// of ours that only we can enter.
std::string pl_state_dir(const std::string &sub);

// Removes a file, or a folder with everything under it, never following a
// link out of it: 0, or the errno value of the first failure.
int pl_remove_tree(const std::string &path);

// The SHA-256 digest of `data` in 64 lower-case hexadecimal digits.
std::string pl_sha256(const std::string &data);

// ---- printing ------------------------------------------------------------------

// A PDF document of the lines (A4, Courier 10, wrapped at the page's width,
// a form feed starting a page) with `title` as its title. `utf8`: the lines
// are UTF-8, else Latin-1 bytes. The same text always gives the same bytes.
std::string pl_text_pdf(const std::vector<std::string> &lines, const std::string &title, bool utf8);

// What to print and, when no printer is set up, where its PDF goes.
struct pl_print_job {
    std::vector<std::string> lines;
    std::string title;     // the job's name at the printer and the PDF's title
    std::string dest;      // a printer by name; "" the one set up, if any
    std::string dir, base; // the PDF: dir/base.pdf, or base-2.pdf and so on
    mode_t mode = 0644;
    bool utf8 = true;
    // Draws the PDF another way (the window's toolkit); "" falls back to
    // the plain text writer.
    std::function<std::string()> render;
};
// Prints the lines on a printer (through lp) or, with none set up, writes
// them as a PDF. 0, or 1 when it failed; `message` says where or why.
int pl_print(const pl_print_job &job, std::string &message);
// The print queues the printing system knows (`lpstat -e`, one a line) and
// the one a print with no destination goes to (PRINTER, else LPDEST, else
// `lpstat -d`; "" none). 0, or -ENOENT when the printing system's client is not there.
int pl_print_queues(std::vector<std::string> &names, std::string &dflt);

// ---- requests from outside to end ---------------------------------------------

// Hang-up, terminate, interrupt, quit and the two user signals: the handler
// notes the signal, wakes a poll on pl_endsig_fd(), and calls `onsignal`,
// which must be safe in a signal handler. Writes past a size limit and to a
// closed pipe fail with an error instead of killing the process.
void pl_endsig_install(void (*onsignal)());
// The signal noted, 0 while none came.
int pl_endsig();
// The read end of the pipe the handler writes to; -1 before install.
int pl_endsig_fd();

// ---- the user's Trash -----------------------------------------------------------

// `$XDG_DATA_HOME/Trash`, or `~/.local/share/Trash`.
std::string pl_trash_dir();
// Moves the file at the absolute path `abs` into the Trash with its info
// file; a name already there gets a number. 0; an errno value when the file
// could not be moved; minus an errno value when the Trash itself failed (its
// folders could not be made, or the info file written).
int pl_trash(const std::string &abs);

// ---- the clipboard --------------------------------------------------------------

#include <vector>

// What the clipboard holds: lines of text, and whether they are a rectangle
// of columns rather than a stretch of a stream.
struct pl_clip {
    std::vector<std::string> lines;
    bool rect = false;
};

// The editor's own clipboard always lives in the process, so that copy and
// paste work with no window and no terminal help. A screen layer that can
// reach a system clipboard installs the hooks: `put` is told of every copy
// (a terminal sends it on; a window takes ownership), `get` is asked first on
// a paste and answers 1 with text, 0 when the system holds nothing newer than
// ours, -1 when the system clipboard cannot be opened.
struct pl_clip_hooks {
    void (*put)(const pl_clip &c) = nullptr;
    int (*get)(pl_clip &c) = nullptr;
};
extern pl_clip_hooks pl_clip_system;

void pl_clip_set(const pl_clip &c); // ours now, and the system's when hooked
// The text to paste: 1 with text, 0 empty, -1 the system clipboard failed.
int pl_clip_get(pl_clip &out);
// Our own copy only, never asking the system (EXTRACT reads it).
const pl_clip &pl_clip_own();
// Lines joined by CR LF, as a system clipboard carries text, and back.
std::string pl_clip_join(const pl_clip &c);
pl_clip pl_clip_split(const std::string &text, bool rect);
// Standard base 64, as terminal clipboard sequences carry text.
std::string pl_base64(const std::string &bytes);

// Text pasted into a terminal, waiting for the editor to take it: the layer
// that received it puts it here, the read cycle takes it once.
void pl_paste_put(const std::string &text);
bool pl_paste_take(std::string &out);

// ---- child processes ------------------------------------------------------------

#include <poll.h>

// A started child: its process, and our ends of its pipes (non-blocking).
struct pl_child {
    pid_t pid = -1;      // -1 once it has ended and been waited for
    bool group = false;  // it leads a process group of its own
    int in = -1;         // writes reach its standard input; -1 none
    int out = -1;        // its standard output (and error, unless PL_ERRPIPE); -1 none
    int err = -1;        // its standard error with PL_ERRPIPE; -1 none
    int status = -1;     // exit status once ended; 128 + signal when killed
    int signal = 0;      // the signal that ended it, 0 none
};

enum : int {
    PL_FEED = 1,    // a pipe to its standard input (else /dev/null, or the tty)
    PL_CAPTURE = 2, // a pipe from its standard output and error
    PL_GROUP = 4,   // its own process group, so that stopping it stops all it started
    PL_KEEPIN = 8,  // it reads our standard input (the terminal) rather than nothing
    PL_ERRPIPE = 16, // with PL_CAPTURE: its standard error through a pipe of its own
    PL_NOERR = 32,   // with PL_CAPTURE: its standard error thrown away
};

// Starts argv[0], searched on PATH, with the NAME=VALUE words of `env` put
// in its environment. 0, or the errno value of the pipe or the start that
// failed (nothing is left running then).
int pl_spawn(const std::vector<std::string> &argv, int flags, pl_child &c,
             const std::vector<std::string> &env = {});
// The words that run a command line through the shell.
std::vector<std::string> pl_shell_argv(const std::string &command);
// A command line that starts `command` in the background and ends at once,
// with its input and output away from ours (it would write over a page).
std::string pl_shell_background(const std::string &command);
// Appends what the child has written, at most `most` bytes, without
// waiting: the bytes added, 0 when nothing is there yet, -1 at the end of
// its output (the pipe is then closed).
long pl_child_read(pl_child &c, std::string &into, size_t most);
// Writes what the pipe takes now without waiting: the bytes taken. A child
// that closed its input takes everything (it is dropped).
size_t pl_child_write(pl_child &c, const char *data, size_t n);
void pl_child_close_input(pl_child &c);
// Whether the child has ended (then `status` and `signal` are set).
bool pl_child_done(pl_child &c);
// Ends the child (its group when it has one): a request, then after a short
// grace a kill; waits for it.
void pl_child_stop(pl_child &c);
// Closes the pipes and stops a child still running.
void pl_child_release(pl_child &c);
// Runs argv to its end with no pipes, its output going where ours goes: 0
// with `c.status` and `c.signal` set, or the errno value of a failed start.
// `stop`, when given, is asked now and then and ends the child when it
// answers true.
int pl_run_wait(const std::vector<std::string> &argv, int flags, bool (*stop)(), pl_child &c);
// A descriptor that becomes readable when the child ends (the caller closes
// it), or -1 where the system has none.
int pl_child_exitfd(const pl_child &c);

// Descriptors a screen layer's wait polls beside its own input; `ready` runs
// from inside the wait when one is readable or closed. The callee removes
// its descriptor when it is done with it.
void pl_watch_add(int fd, void (*ready)(void *), void *ctx);
void pl_watch_remove(int fd);
void pl_watch_fill(std::vector<pollfd> &p);        // appends one entry per descriptor
bool pl_watch_run(const pollfd *p, size_t n);     // calls ready where revents say so
size_t pl_watch_count();
// Polls only the watched descriptors for up to ms; true when a ready ran.
bool pl_watch_poll(int ms);

// Starts `argv` in its own session with `dir` as its working directory and
// does not wait for it: 0, or the errno value of the start.
int pl_start_detached(const std::vector<std::string> &argv, const std::string &dir);

struct pl_run_opts {
    std::vector<std::string> env;   // NAME=VALUE words put in its environment
    int timeout_ms = -1;            // the program is stopped after this; -1 never
    bool (*stop)() = nullptr;       // asked while waiting: true stops the program
    bool with_stderr = true;        // error output gathered with the output
    size_t max_out = 64u << 20;     // output beyond this is read and dropped
};
// Runs `argv` (searched on PATH, no shell between) to its end in its own
// process group with standard input from /dev/null, gathering its output,
// and its error output into `*err` when that is given (else as `with_stderr`
// says): the exit status (128 + the signal that ended it), or minus an
// errno value: -ENOENT no such program, -ETIMEDOUT stopped for the time or
// by `stop`.
int pl_run_capture(const std::vector<std::string> &argv, std::string &out, const pl_run_opts &o = {},
                   std::string *err = nullptr);

// ---- the settings store --------------------------------------------------------

// Keys are written with backslashes, their first part a root such as
// HKEY_CURRENT_USER; values are texts under names ("" is the key's default).
struct pl_value {
    std::string name;  // the value's name
    std::string text;  // its text
};
// `$XDG_CONFIG_HOME/vorta` or `~/.config/vorta`; "" with no home.
std::string pl_settings_dir();
// The key's values in the order written: 0, ENOENT for no such key.
int pl_key_values(const std::string &key, std::vector<pl_value> &out);
// The names of the key's subkeys, sorted: 0, ENOENT for no such key.
int pl_key_subkeys(const std::string &key, std::vector<std::string> &out);
// Makes the key and its parents where missing and replaces its values.
int pl_key_put(const std::string &key, const std::vector<pl_value> &values);
// Removes the key with its subkeys: 0, ENOENT, or another errno value.
int pl_key_delete(const std::string &key);
