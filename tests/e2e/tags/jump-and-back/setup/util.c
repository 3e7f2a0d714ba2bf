/* helpers */
#include <stdio.h>
int count;
int helper(int x)
{
    return x + 1;
}
