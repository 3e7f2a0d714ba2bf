#include <gtest/gtest.h>
#include "fields/fields.h"
