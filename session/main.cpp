// xed: the editor's process entry.
#include "session/xed.h"

int main(int argc, char **argv) { return xfmain(argc, argv); }
