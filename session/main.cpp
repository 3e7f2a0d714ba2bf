// xed: the editor's process entry.
int main() { return 0; }
