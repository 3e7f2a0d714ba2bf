// The numbered messages and the two calls that report them.  In a run with
// no screen the message area is a list kept in the view, written out at the
// end of a batch run.
#include "commands/commands.h"
#include "session/xed.h"

#include <cstdio>

std::string last_message;
std::string *xfmsg_capture = nullptr;

namespace {

struct numbered {
    int number;       // message number
    const char *text; // the text shown
};

// Numbers 36, 88, 95 and 96 are unused.
constexpr numbered table[] = {
    {0, "..... Unable to open file"},
    {1, "..... Not an editable file"},
    {2, "..... File name too long"},
    {3, "..... Invalid field"},
    {4, "..... Too many prefix commands"},
    {5, "..... Invalid F, P, O or OO position"},
    {6, "..... Invalid cursor position"},
    {7, "..... Command too long"},
    {8, "..... Invalid directory"},
    {9, "..... Is ON"},
    {10, "..... Is OFF"},
    {11, "..... Invalid key-word"},
    {12, "..... No userid available"},
    {13, "..... Directory not found"},
    {14, "..... Not a directory"},
    {15, "..... Unable to change directory"},
    {16, "..... Invalid parameters"},
    {17, "..... 1 occurrence changed"},
    {18, "..... Not found"},
    {19, "..... Screen would be too small"},
    {20, "..... Duplicate ID"},
    {21, "..... Unable to save file"},
    {22, "..... File not found"},
    {23, "..... Wrapped"},
    {24, "..... Invalid command"},
    {25, "..... No locate across lines"},
    {26, "..... Recursive macro call"},
    {27, "..... Unable to create new process"},
    {28, "..... Not for multiple lines selection"},
    {29, "..... Internal error; file renamed to avoid data loss and trace saved"},
    {30, "..... System checking"},
    {31, "..... Is EUROPE"},
    {32, "..... Invalid malloc() debug level"},
    {33, "..... Unable to create s_client"},
    {34, "..... Unable to acquire shelf"},
    {35, "..... Internal error; trying to save files with .check filetype"},
    {37, "..... Warning: meaningless command for an APL object"},
    {38, "..... Unable to make button"},
    {39, "..... Invalid button"},
    {40, "..... ./APLOBJ not available"},
    {41, "..... Not with a display object"},
    {42, "..... Display object"},
    {43, "..... Shell done"},
    {44, "..... Shell terminated by signal QUIT"},
    {45, "..... Invalid argument count"},
    {46, "..... Invalid file"},
    {47, "..... Invalid menu file format"},
    {48, "..... Invalid keyboard type"},
    {49, "..... Invalid font"},
    {50, "..... Warning: this object is already in the ring"},
    {51, "..... Not under APL"},
    {52, "..... is DISPLAY"},
    {53, "..... is ALL"},
    {54, "..... Invalid line number"},
    {55, "..... Line not in scope"},
    {56, "..... Already used position"},
    {57, "..... This is the current line position"},
    {58, "..... No current selection"},
    {59, "..... Invalid color"},
    {60, "..... Invalid field"},
    {61, "..... Unable to acquire primary selection"},
    {62, "..... Invalid time-out"},
    {63, "..... Unable to create a pipe to filter"},
    {64, "..... Unable to fork"},
    {65, "..... Warning: time-out while processing filter"},
    {66, "..... Error while processing filter"},
    {67, "..... Invalid character"},
    {68, "..... Invalid colormap entries"},
    {69, "..... Invalid Regular Expression"},
    {70, "..... Invalid \\n character within a command"},
    {71, "..... Is ON STAY"},
    {72, "..... Is ON NOSTAY"},
    {73, "..... Is OFF STAY"},
    {74, "..... Is OFF NOSTAY"},
    {75, "..... LOCATE NOSTAY"},
    {76, "..... LOCATE STAY"},
    {77, "..... Unable to create a socket"},
    {78, "..... Unable to bind socket"},
    {79, "..... Unable to listen on socket"},
    {80, "..... Unable to select on socket"},
    {81, "..... Unable to accept on socket"},
    {82, "..... Unable to read on socket"},
    {83, "..... Unable to write on socket"},
    {84, "..... Invalid external request"},
    {85, "..... Unable to create a pipe to rexx"},
    {86, "..... Unable to write to rexx"},
    {87, "..... Unable to read from rexx"},
    {89, "..... Unable to gethostbyname()"},
    {90, "..... Too many strings"},
    {91, "..... Is ON LEFT"},
    {92, "..... Is ON RIGHT"},
    {93, "..... Is XEDIT"},
    {94, "..... Is ISPF"},
    {97, "..... ENTER STAY"},
    {98, "..... ENTER NOSTAY"},
    {99, "..... Unable to create a pipe while compiling"},
    {100, "..... Unable to fcntl() a pipe while compiling"},
    {101, "..... External process killed"},
    {102, "..... Error while compiling"},
    {103, "..... File vorta_compile.rules not found"},
    {104, "..... Unable to open file vorta_compile.rules"},
    {105, "..... Running"},
    {106, "..... No error found"},
    {107, "..... No valid line number"},
    {108, "..... Empty string"},
    {109, "..... Can not open /tmp"},
    {110, "..... Requested Saber process not found in /tmp"},
    {111, "..... Unable to connect on socket"},
    {112, "..... Saber connection terminated"},
    {113, "..... No Saber daemon running"},
    {114, "..... Time out when reading external command"},
    {115, "..... No help file available"},
    {116, "..... Not such help file"},
    {117, "..... No task help file available"},
    {118, "..... Read only file; use the \"RW ON\" command before"},
    {119, "..... C. saved"},
    {120, "..... Invalid key numbers: must be within 15 24 15"},
    {121, "..... Is ON TOP"},
    {122, "..... Is ON BOT"},
    {123, "..... Is OFF TOP"},
    {124, "..... Is OFF BOT"},
    {125, "..... Is GOTO"},
    {126, "..... Is SCROLL"},
    {127, "..... Is ALL"},
    {128, "..... Is ONE"},
    {129, "..... Searching for MAN pages"},
    {130, "..... Spelling"},
    {131, "..... Spelling OK"},
    {132, "..... No CenterLine CLMS session active"},
    {133, "..... Unable to connect to CLMS session"},
    {134, "..... Unable to acquire EDIT server status"},
    {135, "..... Failure while reading CLMS message. Connection terminated"},
    {136, "..... No current file"},
    {137, "..... CLMS connection terminated."},
    {138, "..... This is not a WorkBench EDIT session."},
    {139, "..... No *.compile file found."},
    {140, "..... Increase window size."},
    {141, "..... Warning: reloaded file; previous file saved in backup format."},
    {142, "..... String 2 contains more arbitrary characters than string 1."},
    {143, "..... is 0."},
    {144, "..... is 1."},
    {145, "..... Invalid current line"},
    {146, "..... Invalid arbitrary string"},
    {147, "..... Is WRAP"},
    {148, "..... Is CTRL"},
    {149, "..... Is NCTRL"},
    {150, "..... Invalid hexadecimal string"},
    {151, "..... Is STAY"},
    {152, "..... Is NOSTAY"},
    {153, "..... Unable to read file"},
    {154, "..... Unable to read device"},
    {155, "..... Bad device"},
    {156, "..... Is MOTIF"},
    {157, "..... Is OPENLOOK"},
    {158, "..... CTLCHAR OFF"},
    {159, "..... Missing Operand"},
    {160, "..... Is SKIP"},
    {161, "..... Is NOSKIP"},
    {162, "..... Is XON"},
    {163, "..... Invalid target"},
    {164, "..... Not implemented"},
    {165, "..... Target Not found"},
    {166, "..... Line Pointer Not found"},
    {167, "..... No memorised string for an empty locate request"},
    {168, "..... The specified target is before the current line"},
    {169, "..... Empty String"},
    {170, "..... Is ZERO"},
    {171, "..... No lines merged"},
    {172, "..... Invalid column number"},
    {173, "..... MOLBA not active"},
    {174, "..... File has been changed; type QQUIT to quit anyway"},
    {175, "..... Is NOWRAP"},
    {176, "..... File too big; use the LIMIT command"},
    {177, "..... PDF COPY pending"},
    {178, "..... Invalid label"},
    {179, "..... Invalid range"},
    {180, "..... No previously memorised string"},
    {181, "..... The 2 picture strings must be the same length"},
    {182, "..... File exists. Use the REPLACE command"},
    {183, "..... PDF CREATE pending"},
    {184, "..... Use quotes for the search string"},
    {185, "..... PDF REPLACE pending"},
    {186, "..... RFIND called before FIND"},
    {187, "..... RCHANGE called before CHANGE"},
    {188, "..... Invalid server"},
    {189, "..... Set truncation column first"},
    {190, "..... Is FULLMOTIF"},
    {191, "..... Is ON NOENV"},
    {192, "..... Is ON ENV"},
    {193, "..... Is OFF NOENV"},
    {194, "..... Is OFF ENV"},
    {195, "..... No rexx help file available"},
    {196, "..... Global Case Respect"},
    {197, "..... Global Case Ignore"},
    {198, "..... Is WINDOWS"},
    {199, "..... The Clipboard is empty"},
    {200, "..... Unable to open Clipboard"},
    {201, "..... Is US"},
    {202, "..... Is ON OLD"},
    {203, "..... No STAMPDELAY active"},
    {204, "..... READ-ONLY control file"},
    {205, "..... SCHANGE not supported in batch mode."},
    {206, "..... Invalid line/column specification."},
    {207, "..... Is OPENLOOK WHEEL"},
    {208, "..... Is LEGACY"},
    {209, "..... Is ECMASCRIPT"},
    {210, "..... Is PCRE"},
};
static_assert(sizeof table / sizeof table[0] == 207, "211 numbers less the four unused");

const char *texts[211]; // by number, filled once from the table

void fill()
{
    if (texts[0])
        return;
    for (auto &m : table)
        texts[m.number] = m.text;
    for (auto &t : texts)
        if (!t)
            t = "";
}

void show(std::string_view text, int level, bool pending)
{
    if (xfmsg_capture) { // a setting's report read by the listing or EXTRACT
        if (!xfmsg_capture->empty())
            xfmsg_capture->push_back('\n');
        xfmsg_capture->append(text);
        return;
    }
    if (!xv) {
        std::fprintf(stderr, "vorta: %.*s\n", (int)text.size(), text.data());
        return;
    }
    last_message.assign(text);
    xv->msgs.emplace_back(text);
    if (pending && level <= 1 && xf)
        xf->pmsgs.emplace_back(text);
}

} // namespace

const char *xfmsg_text(int number)
{
    fill();
    if (number < 0 || number > 210)
        return "....... Unknown error";
    return texts[number];
}

void xfmsg(int number, int level)
{
    show(xfmsg_text(number), level, true);
    if (level == 3 && !batch)
        std::fputs("\a\a\a\a", stderr);
}

void xfmsgs(std::string_view text, int level)
{
    show(text, level, level < 2);
}
