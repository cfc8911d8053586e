"""Calls add(2, 3) on an XML-RPC server through the shared library and prints the answer:

    python3 call_with_ctypes.py http://localhost:8080/RPC2
"""
import ctypes
import sys

library = ctypes.CDLL("libvx.so.1")  # which brings libbq, so that its functions are found here too


def function(name, result, *arguments):
    found = library[name]
    found.restype, found.argtypes = result, arguments
    return found


ref = ctypes.c_void_p  # a pointer to an object of any class
create_string = function("BQStringCreateWithCString", ref, ctypes.c_char_p, ctypes.c_uint32)
create_url = function("BQURLCreateWithString", ref, ref, ref)
create_number = function("BQNumberCreate", ref, ctypes.c_int, ref)
create_dictionary = function("BQDictionaryCreate", ref, ref, ref, ctypes.c_ssize_t)
create_invocation = function("VXMethodInvocationCreate", ref, ref, ref, ref)
set_parameters = function("VXMethodInvocationSetParameters", None, ref, ref, ref)
invoke = function("VXMethodInvocationInvoke", ref, ref)
copy_description = function("VXMethodResultCopyDescription", ref, ref)
get_text = function("BQStringGetUTF8Ptr", ctypes.c_char_p, ref)

# What is created is never released here: the process ends with its one call.
url, method = (create_string(text.encode(), 0x08000100) for text in (sys.argv[1], "add"))
call = create_invocation(create_url(url, None), method, ref.in_dll(library, "kVXXMLRPCProtocol"))
names = (ref * 2)(*(create_string(name, 0x08000100) for name in (b"a", b"b")))
numbers = (ref * 2)(*(create_number(9, ctypes.byref(ctypes.c_int(value))) for value in (2, 3)))
set_parameters(call, create_dictionary(names, numbers, 2), None)
print(get_text(copy_description(invoke(call))).decode())
