#include "commands/commands.h"
