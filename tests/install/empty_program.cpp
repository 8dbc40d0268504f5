// A program that is linked with the library but uses none of it, to test only its loading and unloading.
int main() {}
