// Field manager placeholder until the model lands.
#include "fields/fields.h"
