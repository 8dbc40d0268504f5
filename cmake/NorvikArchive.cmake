# Included where a static library is made of the library's objects: in that folder, archives hold one object.
#
# Classes become known by name before main(), and of an archive with an object a source the linker would leave out those
# whose header no program includes: they would be missing where a class is looked up by its name, as an archive's reader
# does. Of one object a program gets all, by whatever tool it is linked.
set(CMAKE_CXX_ARCHIVE_CREATE
    "<CMAKE_CXX_COMPILER> -r -nostdlib -o <TARGET>.o <OBJECTS>"
    "<CMAKE_AR> rcs <TARGET> <TARGET>.o")
set(CMAKE_CXX_ARCHIVE_FINISH "<CMAKE_COMMAND> -E rm <TARGET>.o")
