# NorvikCore/diagnostics/gdb/norvikcore-gdb.py - loads norvikcore.py when gdb loads the library.
#
# gdb runs this file because its name is the library's with "-gdb.py". The printers are beside it, with ".py" instead.
# They get a namespace of their own, because gdb runs the scripts of all libraries in one.


def load_norvikcore(path):
    with open(path, encoding='utf-8') as source:
        exec(compile(source.read(), path, 'exec'), {'__name__': 'norvikcore'})


load_norvikcore(__file__.replace('-gdb.py', '.py'))
