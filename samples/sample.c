/* A small C file to try the editor on. */
#include <stdio.h>

static int square(int x)
{
    return x * x;
}

int main(void)
{
    int i;
    for (i = 1; i <= 10; i++)
        printf("%2d squared is %3d\n", i, square(i));
    return 0;
}
