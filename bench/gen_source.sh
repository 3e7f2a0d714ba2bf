#!/usr/bin/env bash
# Writes the benchmarks' 2-million-line source-like file (about 92 MB) to
# standard output: a keyword and a numbered name on every line, indented by
# 0 to 12 blanks, `foo` on some 370,000 lines, NEEDLE near the end.
awk 'BEGIN {
  srand(11);
  split("int char return while for static const void struct if else", kw, " ");
  for (i = 1; i <= 2000000; i++) {
    n = int(rand() * 4);
    s = sprintf("%*s", n * 4, "");
    s = s kw[1 + int(rand() * 11)] " value_" i " = call(" int(rand() * 100000) ", y, z);";
    r = rand();
    if (r < 0.1833) {
      s = s " /* foo */";
      if (rand() < 0.1687) s = s " foo_" i;
    }
    if (i == 1999990) s = s " NEEDLE";
    print s;
  }
}'
