// The handlers of the file list's editor commands, for the command table.
#pragma once

struct xfcmd;

int xfcm_flist(const xfcmd &c);  // Flist
int xfcm_rflist(const xfcmd &c); // RFlist: the tree beneath too
int xfcm_dflist(const xfcmd &c); // DFlist: directories only
int xfcm_fflist(const xfcmd &c); // FFList: files only
int xfcm_flquit(const xfcmd &c); // FLQuit
int xfcm_end(const xfcmd &c);    // END: FLQuit inside a list
int xfcm_fldate(const xfcmd &c); // FLDATE EUROPE | USA
int xfcm_flpp(const xfcmd &c);   // FLPP ON | OFF: the parent entry
int xfcm_flath(const xfcmd &c);  // FLAth ON | OFF: the attribute column
int xfcm_flfile(const xfcmd &c); // FLFile: the list into flist.file
int xfcm_xfl(const xfcmd &c);    // XFL: edit with .flist by default
