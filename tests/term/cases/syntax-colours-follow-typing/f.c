int a; /* note */
char *s = "str";
int b;
int c;
