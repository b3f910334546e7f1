// Calls nothing: what the log contains after it, the library has written as it was loaded and
// unloaded.

int main() { return 0; }
