#include "session/xed.h"
