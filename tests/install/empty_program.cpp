// A program that is linked with the library and uses nothing of it: what loading and unloading it does, alone.
int main() {}
