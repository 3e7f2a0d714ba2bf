#include <gtest/gtest.h>
#include "rexx/rexx.h"
