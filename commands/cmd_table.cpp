// The command table: every command name with its abbreviation, flags and
// handler, the settings that are accepted and ignored, the hash that finds an
// entry from any abbreviation, and the SET table.
#include "commands/commands.h"
#include "commands/handlers.h"
#include "flist/fl_handlers.h"
#include "commands/xfsettings.h"

#include <cctype>
#include <cstring>

// The order matters: the earlier entry wins every clash of abbreviations,
// and the first five are tried on the line itself before the hash.
// Rows whose handler is xfcm_notimpl are the commands still to be built.
const cmd_entry cmd_table[CMD_COUNT] = {
    {"-\\", 0, xfcm_bsearch},
    {"\\", 0, xfcm_fsearch},
    {"R/", 0, xfcm_rsearch},
    {"=", CMD_SET, xfcm_equal},
    {"?", 0, xfcm_qmark},
    {"ALT", CMD_SET | CMD_QUERY, xfcm_alt},
    {"ARBchar", CMD_SET | CMD_QUERY, xfcm_arbchar},
    {"AUTOBin", CMD_SET | CMD_QUERY, xfcm_autobin},
    {"AUTOExp", CMD_SET | CMD_QUERY, xfcm_autoexp},
    {"AUTOIndent", CMD_SET | CMD_QUERY, xfcm_autoindent},
    {"AUtosave", CMD_SET | CMD_QUERY, xfcm_autosave},
    {"BACKUP", CMD_SET | CMD_QUERY, xfcm_backup},
    {"BEEP", CMD_SET | CMD_QUERY, xfcm_stored},
    {"BInary", CMD_SET | CMD_QUERY, xfcm_binary},
    {"BOUNDS", CMD_SET | CMD_QUERY, xfcm_verify},
    {"CASE", CMD_SET | CMD_QUERY, xfcm_case},
    {"CLICKdelay", CMD_SET | CMD_QUERY, xfcm_clickdelay},
    {"CMDline", CMD_SET | CMD_QUERY, xfcm_cmdline},
    {"COLor", CMD_SET | CMD_QUERY, xfcm_color},
    {"CTLchar", CMD_SET | CMD_QUERY, xfcm_stored},
    {"CURLine", CMD_SET | CMD_QUERY, xfcm_curline},
    {"DISPlay", CMD_SET | CMD_QUERY, xfcm_display},
    {"ESCAPEdelay", CMD_SET | CMD_QUERY, xfcm_stored},
    {"FMAcro", CMD_SET | CMD_QUERY, xfcm_stored},
    {"FOLLOW", CMD_SET | CMD_QUERY, xfcm_stored},
    {"FORCEFOCUS", CMD_SET | CMD_QUERY, xfcm_stored},
    {"FORMAT", CMD_SET | CMD_QUERY, xfcm_format},
    {"FLDATE", CMD_SET | CMD_QUERY, xfcm_fldate},
    {"FLPP", CMD_SET | CMD_QUERY, xfcm_flpp},
    {"GLOBALCase", CMD_SET | CMD_QUERY, xfcm_stored},
    {"HEX", CMD_SET | CMD_QUERY, xfcm_hex},
    {"HIStory", CMD_SET | CMD_QUERY, xfcm_history},
    {"HIghlight", CMD_SET | CMD_QUERY, xfcm_stored},
    {"IMPcmscp", CMD_SET | CMD_QUERY, xfcm_impcmscp},
    {"ISOConv", CMD_SET | CMD_QUERY, xfcm_isoconv},
    {"KEEPBlanks", CMD_SET | CMD_QUERY, xfcm_keepblanks},
    {"LASTLorc", CMD_SET | CMD_QUERY, xfcm_lastlorc},
    {"LASTFiles", CMD_SET | CMD_QUERY, xfcm_lastfiles},
    {"LIMIT", CMD_SET | CMD_QUERY, xfcm_limit},
    {"LINENd", CMD_SET | CMD_QUERY, xfcm_linend},
    {"LINECol", CMD_SET | CMD_QUERY, xfcm_stored},
    {"LRecl", CMD_SET | CMD_QUERY, xfcm_lrecl},
    {"MACRO", CMD_SET | CMD_QUERY, xfcm_macro},
    {"MARgins", CMD_SET | CMD_QUERY, xfcm_margins},
    {"MESsagesdir", CMD_SET | CMD_QUERY, xfcm_stored},
    {"METAKey", CMD_SET | CMD_QUERY, xfcm_stored},
    {"MOUSEMode", CMD_SET | CMD_QUERY, xfcm_mousemode},
    {"NUMBER_Screen", CMD_SET | CMD_QUERY, xfcm_number_screen},
    {"NUMber", CMD_SET | CMD_QUERY, xfcm_number},
    {"POWerinput", CMD_SET | CMD_QUERY, xfcm_powerinput},
    {"PREFIX_Screen", CMD_SET | CMD_QUERY, xfcm_prefix_screen},
    {"PREfix", CMD_SET | CMD_QUERY, xfcm_prefix},
    {"Point", CMD_SET | CMD_QUERY, xfcm_point},
    {"RECycle", CMD_SET | CMD_QUERY, xfcm_recycle},
    {"REPEATDelay", CMD_SET | CMD_QUERY, xfcm_repeatdelay},
    {"RESERved", CMD_SET | CMD_QUERY, xfcm_reserved},
    {"RW", CMD_SET | CMD_QUERY, xfcm_rw},
    {"SAVEClearundo", CMD_SET | CMD_QUERY, xfcm_saveclearundo},
    {"SCALE_Screen", CMD_SET | CMD_QUERY, xfcm_scale_screen},
    {"SCALe", CMD_SET | CMD_QUERY, xfcm_scale},
    {"SCOpe", CMD_SET | CMD_QUERY, xfcm_scope},
    {"SCROllbar", CMD_SET | CMD_QUERY, xfcm_stored},
    {"SCKeys", CMD_SET | CMD_QUERY, xfcm_sckeys},
    {"SELect", CMD_SET | CMD_QUERY, xfcm_select},
    {"SELECTAll", CMD_SET | CMD_QUERY, xfcm_selectall},
    {"SEP", CMD_SET | CMD_QUERY, xfcm_linend},
    {"SHAdow", CMD_SET | CMD_QUERY, xfcm_shadow},
    {"SHBlank", CMD_SET | CMD_QUERY, xfcm_stored},
    {"SHOWHistory", CMD_SET | CMD_QUERY, xfcm_stored},
    {"SPAN", CMD_SET | CMD_QUERY, xfcm_span},
    {"STAY", CMD_SET | CMD_QUERY, xfcm_stay},
    {"STAMpdelay", CMD_SET | CMD_QUERY, xfcm_stored},
    {"STReam", CMD_SET | CMD_QUERY, xfcm_stored},
    {"TABLINE_Screen", CMD_SET | CMD_QUERY, xfcm_tabline_screen},
    {"TABLine", CMD_SET | CMD_QUERY, xfcm_tabline},
    {"TABSet", CMD_SET | CMD_QUERY, xfcm_tabset},
    {"TOolbar", CMD_SET | CMD_QUERY, xfcm_toolbar},
    {"TIMELOAD", CMD_SET | CMD_QUERY, xfcm_stored},
    {"TRUnc", CMD_SET | CMD_QUERY, xfcm_trunc},
    {"VARblank", CMD_SET | CMD_QUERY, xfcm_varblank},
    {"VERIFY_Screen", CMD_SET | CMD_QUERY, xfcm_verify_screen},
    {"Verify", CMD_SET | CMD_QUERY, xfcm_verify},
    {"VIsible", CMD_SET | CMD_QUERY, xfcm_stored},
    {"WORDChars", CMD_SET | CMD_QUERY, xfcm_stored},
    {"WRap", CMD_SET | CMD_QUERY, xfcm_wrap},
    {"XSHELLMax", CMD_SET | CMD_QUERY, xfcm_stored},
    {"ZONE_Screen", CMD_SET | CMD_QUERY, xfcm_zone_screen},
    {"Zone", CMD_SET | CMD_QUERY, xfcm_zone},
    {"XTESTChars", CMD_SET | CMD_QUERY, xfcm_stored},
    {"WINSHRinktofit", CMD_SET | CMD_QUERY, xfcm_stored},
    {"ENCoding", CMD_SET | CMD_QUERY, xfcm_encoding},
    {"FD", CMD_SET, xfcm_fnameparts},
    {"FName", CMD_SET, xfcm_fnameparts},
    {"FONt", CMD_SET, xfcm_font},
    {"FType", CMD_SET, xfcm_fnameparts},
    {"KEYboard", CMD_SET, xfcm_key},
    {"PENDing", CMD_SET, xfcm_pending},
    {"SCReen", CMD_SET, xfcm_screen},
    {"STAck", CMD_SET, xfcm_stack},
    {"SYNTax", CMD_SET, xfcm_syntax},
    {"SYNonym", CMD_SET, xfcm_synonym},
    {"APL", CMD_QUERY, xfcm_stored},
    {"CTags", CMD_QUERY, xfcm_ctags},
    {"OBsolete", CMD_QUERY, xfcm_stored},
    {"RELEase", CMD_QUERY, xfcm_stored},
    {"RELoad", CMD_QUERY, xfcm_stored},
    {"REMap", CMD_QUERY, xfcm_remap},
    {"ACCess", 0, xfcm_notimpl},
    {"ALl", 0, xfcm_all},
    {"AQUIT", 0, xfcm_aquit},
    {"Add", 0, xfcm_add},
    {"BAckward", 0, xfcm_backward},
    {"BOUCLE", 0, xfcm_notimpl},
    {"BUILTIN", 0, xfcm_command},
    {"BUtton", 0, xfcm_notimpl},
    {"Bottom", 0, xfcm_bottom},
    {"CANcel", 0, xfcm_notimpl},
    {"CAPS", 0, xfcm_notimpl},
    {"CAppend", 0, xfcm_cappend},
    {"CD", 0, xfcm_notimpl},
    {"CDElete", 0, xfcm_clocate},
    {"CENTER_End", 0, xfcm_clms},
    {"CENTER_Init", 0, xfcm_clms},
    {"CENTER_Send", 0, xfcm_clms},
    {"CEnter", 0, xfcm_center},
    {"CFirst", 0, xfcm_cfirst},
    {"CHG", 0, xfcm_pdfchange},
    {"CInsert", 0, xfcm_cinsert},
    {"CLAst", 0, xfcm_clast},
    {"CLEARErrors", 0, xfcm_clearerrors},
    {"CLocate", 0, xfcm_clocate},
    {"CLOSEConsole", 0, xfcm_closeconsole},
    {"CMSG", 0, xfcm_cmsg},
    {"CN", 0, xfcm_xedchange},
    {"COMPIle", 0, xfcm_compile},
    {"COMPLete", 0, xfcm_notimpl},
    {"COMPRess", 0, xfcm_notimpl},
    {"COMmand", 0, xfcm_command},
    {"COUnt", 0, xfcm_count},
    {"COVerlay", 0, xfcm_coverlay},
    {"COpy", 0, xfcm_copy},
    {"CREAte", 0, xfcm_create},
    {"CReplace", 0, xfcm_creplace},
    {"CURsor", 0, xfcm_notimpl},
    {"C_APLStop", 0, xfcm_notimpl},
    {"C_APLTrace", 0, xfcm_notimpl},
    {"C_Dup", 0, xfcm_notimpl},
    {"C_ENDCurl", 0, xfcm_endcurl},
    {"C_ENDLine", 0, xfcm_endline},
    {"C_ENDS", 0, xfcm_notimpl},
    {"C_ENDSAll", 0, xfcm_notimpl},
    {"C_ENDSR", 0, xfcm_notimpl},
    {"C_EXT", 0, xfcm_notimpl},
    {"C_Find", 0, xfcm_c_find},
    {"C_LINEAdd", 0, xfcm_lineadd},
    {"C_LINEDel", 0, xfcm_notimpl},
    {"C_SCRH", 0, xfcm_notimpl},
    {"C_SCRJ", 0, xfcm_notimpl},
    {"C_SCRV", 0, xfcm_notimpl},
    {"C_SPlit", 0, xfcm_split},
    {"C_STARTLine", 0, xfcm_notimpl},
    {"C_STARTS", 0, xfcm_notimpl},
    {"Change", 0, xfcm_change},
    {"DACCess", 0, xfcm_notimpl},
    {"DEFINE", 0, xfcm_define},
    {"DELAY", 0, xfcm_cmsg},
    {"DELete", 0, xfcm_delete},
    {"DFlist", 0, xfcm_dflist},
    {"DOSFile", 0, xfcm_file},
    {"DOSSave", 0, xfcm_save},
    {"DRELEase", 0, xfcm_notimpl},
    {"DUPlicat", 0, xfcm_duplicat},
    {"DY_All", 0, xfcm_dy_all},
    {"DY_Exclude", 0, xfcm_dy_all},
    {"DY_FInd", 0, xfcm_dy_find},
    {"DY_FOnt", 0, xfcm_dy_font},
    {"DY_Open", 0, xfcm_dy_open},
    {"DY_SHow", 0, xfcm_dy_all},
    {"Down", 0, xfcm_down},
    {"EDIT", 0, xfcm_xedit},
    {"EEXIT", 0, xfcm_notimpl},
    {"EMSG", 0, xfcm_msg},
    {"END", 0, xfcm_end},
    {"EXClude", 0, xfcm_exclude},
    {"EXIT", 0, xfcm_notimpl},
    {"EXTract", 0, xfcm_extract},
    {"FBUtton", 0, xfcm_notimpl},
    {"FFile", 0, xfcm_file},
    {"FFList", 0, xfcm_fflist},
    {"FILTer", 0, xfcm_filter},
    {"FINDUp", 0, xfcm_findup},
    {"FINd", 0, xfcm_find},
    {"FIle", 0, xfcm_file},
    {"FILEConv", 0, xfcm_fileconv},
    {"FLAth", 0, xfcm_flath},
    {"FLFile", 0, xfcm_flfile},
    {"FLOW", 0, xfcm_flow},
    {"FLQuit", 0, xfcm_flquit},
    {"FORCERefresh", 0, xfcm_notimpl},
    {"FORward", 0, xfcm_forward},
    {"FUp", 0, xfcm_findup},
    {"Flist", 0, xfcm_flist},
    {"GET_Panel", 0, xfcm_notimpl},
    {"Get", 0, xfcm_get},
    {"HAsh", 0, xfcm_hash},
    {"HEXType", 0, xfcm_notimpl},
    {"HOme", 0, xfcm_home},
    {"Help", 0, xfcm_help},
    {"ISWitch", 0, xfcm_iswitch},
    {"Input", 0, xfcm_input},
    {"KFIle", 0, xfcm_file},
    {"KSAve", 0, xfcm_save},
    {"LEFTAdjust", 0, xfcm_leftadjust},
    {"LEft", 0, xfcm_left},
    {"LIsten", 0, xfcm_notimpl},
    {"LOWercas", 0, xfcm_lowercas},
    {"Locate", 0, xfcm_locate},
    {"MAN", 0, xfcm_man},
    {"MAtch", 0, xfcm_match},
    {"MButton", 0, xfcm_notimpl},
    {"MENu", 0, xfcm_menu},
    {"MENUBar", 0, xfcm_menubar},
    {"MErge", 0, xfcm_merge},
    {"MODe", 0, xfcm_mode},
    {"MOve", 0, xfcm_move},
    {"MSG", 0, xfcm_msg},
    {"NEXTError", 0, xfcm_nexterror},
    {"NEXTWord", 0, xfcm_nextword},
    {"NEWFile", 0, xfcm_notimpl},
    {"NFINDUp", 0, xfcm_nfindup},
    {"NFUp", 0, xfcm_nfindup},
    {"NFind", 0, xfcm_nfind},
    {"NIS", 0, xfcm_notimpl},
    {"NISG", 0, xfcm_notimpl},
    {"NSort", 0, xfcm_nsort},
    {"Next", 0, xfcm_down},
    {"PDFCANcel", 0, xfcm_notimpl},
    {"PDFCOpy", 0, xfcm_pdfcopy},
    {"PDFChange", 0, xfcm_pdfchange},
    {"PDFDELete", 0, xfcm_pdfdelete},
    {"PDFEXClude", 0, xfcm_pdfexclude},
    {"PDFFINd", 0, xfcm_pdffind},
    {"PDFLocate", 0, xfcm_pdflocate},
    {"PDFReplace", 0, xfcm_pdfreplace},
    {"PGDown", 0, xfcm_pgdown},
    {"PGUp", 0, xfcm_pgup},
    {"PQUIT", 0, xfcm_pquit},
    {"PREVWord", 0, xfcm_prevword},
    {"PREServe", 0, xfcm_notimpl},
    {"PRINTScreen", 0, xfcm_printscreen},
    {"PRINTFile", 0, xfcm_printfile},
    {"PRESERVLinks", 0, xfcm_preservlinks},
    {"PRNOPAR", 0, xfcm_notimpl},
    {"PRompt", 0, xfcm_prompt},
    {"PURge", 0, xfcm_notimpl},
    {"PUT", 0, xfcm_notimpl},
    {"PUTD", 0, xfcm_notimpl},
    {"PWD", 0, xfcm_pwd},
    {"QID", 0, xfcm_qid},
    {"QQuit", 0, xfcm_quit},
    {"QUIT", 0, xfcm_quit},
    {"Query", 0, xfcm_query},
    {"RChange", 0, xfcm_rchange},
    {"SRChange", 0, xfcm_srchange},
    {"PDFRChange", 0, xfcm_pdfrchange},
    {"XEDRChange", 0, xfcm_xedrchange},
    {"READ", 0, xfcm_read},
    {"READScreen", 0, xfcm_readscreen},
    {"REDo", 0, xfcm_redo},
    {"REFRESH", 0, xfcm_refresh},
    {"REGtype", 0, xfcm_regtype},
    {"REPEat", 0, xfcm_repeat},
    {"RESTore", 0, xfcm_notimpl},
    {"RESet", 0, xfcm_notimpl},
    {"RFINd", 0, xfcm_rfind},
    {"RFlist", 0, xfcm_rflist},
    {"RIGHTAdjust", 0, xfcm_rightadjust},
    {"RIght", 0, xfcm_right},
    {"Replace", 0, xfcm_replace},
    {"RTLF", 0, xfcm_notimpl},
    {"WRTL", 0, xfcm_notimpl},
    {"SABER_End", 0, xfcm_saber},
    {"SABER_Init", 0, xfcm_saber},
    {"SABER_Send", 0, xfcm_saber},
    {"SAve", 0, xfcm_save},
    {"SCN", 0, xfcm_xedchange},
    {"SChange", 0, xfcm_xedchange},
    {"SETEnv", 0, xfcm_notimpl},
    {"SETP", 0, xfcm_setp},
    {"SEt", 0, xfcm_set},
    {"SHEll", 0, xfcm_shell},
    {"SHEllEXT", 0, xfcm_xshell},
    {"SHift", 0, xfcm_shift},
    {"SHOWCdpath", 0, xfcm_notimpl},
    {"SHOWPath", 0, xfcm_notimpl},
    {"SHOw", 0, xfcm_show},
    {"SOS", 0, xfcm_notimpl},
    {"SOrt", 0, xfcm_sort},
    {"SORTRing", 0, xfcm_notimpl},
    {"SPELL", 0, xfcm_spell},
    {"SPELL_Add", 0, xfcm_spell_add},
    {"SPELL_Next", 0, xfcm_spell_next},
    {"SPLTJOIN", 0, xfcm_split},
    {"SSave", 0, xfcm_save},
    {"STop", 0, xfcm_notimpl},
    {"SWitch", 0, xfcm_sw},
    {"SYSCMD", 0, xfcm_syscmd},
    {"S_COpy", 0, xfcm_s_copy},
    {"S_CUt", 0, xfcm_s_cut},
    {"S_Find", 0, xfcm_s_find},
    {"S_Help", 0, xfcm_s_help},
    {"S_Lower", 0, xfcm_s_lower},
    {"S_LShift", 0, xfcm_s_lshift},
    {"S_MAN", 0, xfcm_s_man},
    {"S_PRsh", 0, xfcm_s_prsh},
    {"S_Paste", 0, xfcm_s_paste},
    {"S_RShift", 0, xfcm_s_rshift},
    {"S_Set", 0, xfcm_s_set},
    {"S_Upper", 0, xfcm_s_upper},
    {"S_Xed", 0, xfcm_s_xed},
    {"TABExp", 0, xfcm_notimpl},
    {"XEDCANcel", 0, xfcm_notimpl},
    {"XEDCOpy", 0, xfcm_xedcopy},
    {"XEDChange", 0, xfcm_xedchange},
    {"XEDDELete", 0, xfcm_xeddelete},
    {"XEDEXClude", 0, xfcm_xedexclude},
    {"XEDFINd", 0, xfcm_xedfind},
    {"XEDLocate", 0, xfcm_xedlocate},
    {"XEDReplace", 0, xfcm_xedreplace},
    {"TOP", 0, xfcm_top},
    {"TRAce", 0, xfcm_notimpl},
    {"UNButton", 0, xfcm_notimpl},
    {"UNDo", 0, xfcm_undo},
    {"UNSetenv", 0, xfcm_notimpl},
    {"UPPercas", 0, xfcm_uppercas},
    {"Up", 0, xfcm_up},
    {"VERIFY_SAve", 0, xfcm_save},
    {"VERIFY_SSAve", 0, xfcm_save},
    {"VERIFY_KSAve", 0, xfcm_save},
    {"W", 0, xfcm_pwd},
    {"WB_SEND", 0, xfcm_wb},
    {"WB_SETC", 0, xfcm_wb},
    {"WIndows", 0, xfcm_shell},
    {"XCSHell", 0, xfcm_xshell},
    {"XKSHell", 0, xfcm_xshell},
    {"XSHell", 0, xfcm_xshell},
    {"XSHOwhistory", 0, xfcm_xshowhistory},
    {"XTCSHell", 0, xfcm_xshell},
    {"XWindows", 0, xfcm_xshell},
    {"WHeel", 0, xfcm_notimpl},
    {"\xbd", 0, xfcm_notimpl},
    {"\xee", 0, xfcm_notimpl},
    {"X", 0, xfcm_notimpl},
    {"XC", 0, xfcm_notimpl},
    {"XE", 0, xfcm_notimpl},
    {"XEDit", 0, xfcm_xedit},
    {"XKB", 0, xfcm_notimpl},
    {"XBin", 0, xfcm_notimpl},
    {"XF", 0, xfcm_notimpl},
    {"XFL", 0, xfcm_xfl},
    {"XH", 0, xfcm_notimpl},
    {"XI", 0, xfcm_notimpl},
    {"XM", 0, xfcm_notimpl},
    {"XP", 0, xfcm_notimpl},
    {"XT", 0, xfcm_notimpl},
    {"XX", 0, xfcm_notimpl},
    {"XS", 0, xfcm_notimpl},
};

const cmd_entry notimp_table[NOTIMP_COUNT] = {
    {"BRKkey", CMD_SET, nullptr},   {"COLPtr", CMD_SET, nullptr},  {"ESCape", CMD_SET, nullptr},
    {"ETARBCH", CMD_SET, nullptr},  {"ETMODE", CMD_SET, nullptr},  {"FILler", CMD_SET, nullptr},
    {"FMode", CMD_SET, nullptr},    {"FULLread", CMD_SET, nullptr}, {"IMage", CMD_SET, nullptr},
    {"MASK", CMD_SET, nullptr},     {"MSGLine", CMD_SET, nullptr}, {"MSGMode", CMD_SET, nullptr},
    {"NONDisp", CMD_SET, nullptr},  {"NULls", CMD_SET, nullptr},   {"PA1", CMD_SET, nullptr},
    {"PA2", CMD_SET, nullptr},      {"PA3", CMD_SET, nullptr},     {"PACK", CMD_SET, nullptr},
    {"RANge", CMD_SET, nullptr},    {"RECfm", CMD_SET, nullptr},   {"REMOte", CMD_SET, nullptr},
    {"SERial", CMD_SET, nullptr},   {"SIDcode", CMD_SET, nullptr}, {"SPILL", CMD_SET, nullptr},
    {"TERMinal", CMD_SET, nullptr}, {"TEXT", CMD_SET, nullptr},    {"TOPEOF", CMD_SET, nullptr},
    {"TRANSLat", CMD_SET, nullptr},
};

cmd_info cmd_infos[CMD_COUNT];
cmd_info notimp_infos[NOTIMP_COUNT];

namespace {

constexpr int BUCKETS = 8192;

struct hash_item {
    std::string key;        // a folded abbreviation
    const cmd_entry *entry; // the entry it stands for
};
std::vector<hash_item> buckets[BUCKETS]; // each chain in insertion order
std::vector<const cmd_entry *> set_rows; // settable entries, then notimp rows

void fill_info(const cmd_entry &e, cmd_info &inf)
{
    inf.len = (int)std::strlen(e.name);
    inf.lname.assign(e.name);
    inf.min = inf.len;
    for (int i = 0; i < inf.len; i++) {
        unsigned char c = (unsigned char)e.name[i];
        if (c >= 'a' && c <= 'z') {
            inf.min = i;
            break;
        }
    }
    for (auto &c : inf.lname)
        if ((unsigned char)c < 128)
            c = (char)std::tolower((unsigned char)c);
}

void hash_insert(std::string_view key, const cmd_entry *e)
{
    auto &chain = buckets[cmd_hash_of(key)];
    for (auto &it : chain)
        if (it.key == key)
            return; // the earlier entry keeps the abbreviation
    chain.push_back({std::string(key), e});
}

} // namespace

int cmd_hash_of(std::string_view key)
{
    if (key.empty())
        return 0;
    unsigned h = (unsigned char)key[0];
    for (unsigned char c : key)
        h = (h * 31 + c) & 0x1fff;
    return (int)h;
}

void cmd_init()
{
    static bool done = false;
    if (done)
        return;
    done = true;
    for (int i = 0; i < CMD_COUNT; i++)
        fill_info(cmd_table[i], cmd_infos[i]);
    for (int i = 0; i < NOTIMP_COUNT; i++)
        fill_info(notimp_table[i], notimp_infos[i]);
    for (int i = 0; i < CMD_COUNT; i++) {
        const cmd_info &inf = cmd_infos[i];
        for (int l = inf.min; l <= inf.len; l++)
            if (l > 0)
                hash_insert(std::string_view(inf.lname).substr(0, (size_t)l), &cmd_table[i]);
    }
    for (int i = 0; i < CMD_COUNT; i++)
        if (cmd_table[i].flags & CMD_SET)
            set_rows.push_back(&cmd_table[i]);
    for (int i = 0; i < NOTIMP_COUNT; i++)
        set_rows.push_back(&notimp_table[i]);
}

const cmd_entry *cmd_lookup(std::string_view folded_word)
{
    if (folded_word.empty())
        return nullptr;
    for (auto &it : buckets[cmd_hash_of(folded_word)])
        if (it.key == folded_word)
            return it.entry;
    return nullptr;
}

int cmd_index(const cmd_entry *e)
{
    if (e >= cmd_table && e < cmd_table + CMD_COUNT)
        return (int)(e - cmd_table);
    return -1;
}

const cmd_info &cmd_info_of(const cmd_entry *e)
{
    if (e >= notimp_table && e < notimp_table + NOTIMP_COUNT)
        return notimp_infos[e - notimp_table];
    return cmd_infos[e - cmd_table];
}

std::vector<const cmd_entry *> &set_table() { return set_rows; }

// The text's first word abbreviates the name: at least the minimum, and every
// byte up to a blank or tab (or the name's end) equal, case folded.
bool word_match(std::string_view text, const cmd_info &name)
{
    if ((int)text.size() < name.min || (name.min == 0 && text.empty()))
        return false;
    size_t i = 0;
    for (; i < text.size() && text[i] != ' ' && text[i] != '\t'; i++) {
        if (i >= name.lname.size())
            return false;
        unsigned char c = (unsigned char)text[i];
        if (c < 128)
            c = (unsigned char)std::tolower(c);
        if (c != (unsigned char)name.lname[i])
            return false;
    }
    return (int)i >= name.min;
}

bool abbrev(std::string_view word, std::string_view name, int min)
{
    if ((int)word.size() < min || word.size() > name.size())
        return false;
    for (size_t i = 0; i < word.size(); i++)
        if (std::tolower((unsigned char)word[i]) != std::tolower((unsigned char)name[i]))
            return false;
    return true;
}

// A synonym's name at the start of the line, followed by the end, a blank, a
// tab, a digit or '-'.
bool synonym_match(std::string_view text, std::string_view name, int minlen)
{
    size_t n = 0;
    while (n < text.size() && n < name.size() && text[n] == name[n])
        n++;
    if ((int)n < minlen)
        return false;
    if (n < text.size()) {
        char c = text[n];
        bool delim = c == ' ' || c == '\t' || c == '-' || (c >= '0' && c <= '9');
        if (!delim)
            return false;
    }
    return true;
}
