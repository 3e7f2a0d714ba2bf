// Interpreter placeholder until the lexer lands.
#include "rexx/rexx.h"
