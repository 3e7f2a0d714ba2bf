// The editor's colour names, by logical colour: a colour is its position in
// this table, from 1. A name may be shortened down to its capitals.
#include "syntax/syn.h"

#include <cctype>

namespace {

constexpr const char *names[64] = {
    "BLUe", "Red", "Orange", "Green", "Indigo", "Yellow", "BLAck",
    "\x01",  // 8 is no colour of a rule: a name nobody can type
    "MAGenta", "Cyan", "MAGENTA2", "MARoon", "MAROON2", "PInk", "Aquamarine", "BEige", "BRown",
    "CAdetblue", "CHArtreuse", "CHOcolate", "COral", "DARKGOLdenrod", "DARKOLIvegreen",
    "DARKSLATEBlue", "DARKSLATEGray", "DEeppink", "DImgray", "FIrebrick", "FOrestgreen", "GOld",
    "HOtpink", "INdianred", "KHaki", "LAwngreen", "LEmonchiffon", "LIGHTCyan", "LIGHTGoldenrod",
    "LIGHTGOLDENRODYellow", "LIGHTSEagreen", "LIGHTSLateblue", "MEDIUMAquamarine",
    "MEDIUMSEagreen", "MEDIUMSPringgreen", "MIdnightblue", "MOccasin", "OLivedrab", "ORchid",
    "PALEGoldenrod", "PALETurquoise", "ROSybrown", "ROYalblue", "SADdlebrown", "SALmon", "SIenna",
    "SLATEBlue", "SLATEGray", "SPringgreen", "STeelblue", "TUrquoise", "VIOLETRed", "WHEat",
    "White", "PERIwinkle", "PUrple",
};

// The length a name may be shortened to: its leading capitals and digits.
size_t least(const char *n) {
  size_t k = 0;
  while (n[k] && (std::isupper(static_cast<unsigned char>(n[k])) || std::isdigit(static_cast<unsigned char>(n[k]))))
    k++;
  return k;
}

}  // namespace

int syn_colour(std::string_view w) {
  for (int i = 0; i < 64; i++) {
    const char *n = names[i];
    size_t len = 0;
    while (n[len]) len++;
    if (w.empty() || w.size() < least(n) || w.size() > len) continue;
    bool same = true;
    for (size_t k = 0; k < w.size() && same; k++)
      same = std::tolower(static_cast<unsigned char>(w[k])) == std::tolower(static_cast<unsigned char>(n[k]));
    if (same) return i + 1;
  }
  return 0;
}

const char *syn_colour_name(int colour) {
  return colour >= 1 && colour <= 64 && colour != 8 ? names[colour - 1] : "";
}
