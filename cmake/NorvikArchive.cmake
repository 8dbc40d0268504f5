# Included when a static library is made from the library's objects. Archives in that folder then hold one object.
#
# Classes register their names before main(). If the archive had one object per source, the linker would leave out
# sources whose headers no program includes. Their classes would then be missing when they are looked up by name,
# as NSKeyedUnarchiver does. A program that links one object gets all classes, whatever tool links it.
set(CMAKE_CXX_ARCHIVE_CREATE
    "<CMAKE_CXX_COMPILER> -r -nostdlib -o <TARGET>.o <OBJECTS>"
    "<CMAKE_AR> rcs <TARGET> <TARGET>.o")
set(CMAKE_CXX_ARCHIVE_FINISH "<CMAKE_COMMAND> -E rm <TARGET>.o")
