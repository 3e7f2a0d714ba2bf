// molba: the stand-alone REXX interpreter.
#include <cstdio>

int main(int argc, char **argv)
{
    if (argc < 2) {
        std::fprintf(stderr, "molba: no program given\n");
        return 1;
    }
    (void)argv;
    return 0;
}
