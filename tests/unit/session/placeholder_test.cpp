#include <gtest/gtest.h>
#include "session/xed.h"
