// The first look-up of a class registers the classes of the library.
#include "NorvikCore/platform/object/Class.h"

int main() { return norvik::Class::named("NSURL") ? 0 : 1; }
