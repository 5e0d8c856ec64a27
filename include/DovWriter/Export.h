#ifndef DOVWRITER_EXPORT_H
#define DOVWRITER_EXPORT_H

// The library is built with hidden visibility; only what carries this macro
// is visible to a host. Hosts see the same attribute, which lets the type
// information of exported classes (the exception above all) match across the
// library boundary.
#if defined(_WIN32)
#  if defined(DOVWRITER_BUILDING)
#    define DOVWRITER_API __declspec(dllexport)
#  else
#    define DOVWRITER_API __declspec(dllimport)
#  endif
#else
#  define DOVWRITER_API __attribute__((visibility("default")))
#endif

#endif
