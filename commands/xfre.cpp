// The regular-expression switch: REGtype's code picks one of the two
// engines, and every caller goes through xfre() so that a search, a change
// and ALL always use the same one.
#include "commands/xfregex.h"

int regtype = 1;

namespace {

// Indexed by REGtype's code: 0 LEGACY, 1 ECMASCRIPT.
constexpr const xfre_engine &(*engines[])() = {
    xfre_legacy,
    xfre_ecma,
};
static_assert(sizeof engines / sizeof engines[0] == 2);

} // namespace

const xfre_engine &xfre()
{
    // A code out of range can only come from a bad store; the default
    // engine is the safer guess than an index past the table.
    int i = regtype == 0 ? 0 : 1;
    return engines[i]();
}
