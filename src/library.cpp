// library.cpp: the shared library's own translation unit; its content is the subsystem archives, linked whole.
