/* a header with a mistake */
int helper(void)
{
    return 2
}
