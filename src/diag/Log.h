/* The log line and the print to the standard error stream. */
#ifndef VX_DIAG_LOG_H
#define VX_DIAG_LOG_H

#include <BQ/BQBase.h>

#include "values/Owned.h"

namespace vx {

/*
 * All that is written shows control characters as escapes, but keeps line feeds and tabs. Text of a peer that
 * belongs on one line is passed through onOneLine, so that it cannot pass for lines of ours.
 */

/*
 * Writes "VX (process id): ", the formatted text and a line end, if gVXDebug is on.
 * Emitters of verbose messages test gVXDebugVerbose first. Returns 0.
 */
int _vxLogf(const char* format, ...);

/* Writes the formatted text, always, with nothing added. */
void vxPrintf(const BQString* format, ...);

/* Writes a dictionary as a property list, or its description if it is none, always. */
void vxDumpDict(const char* label, const BQDictionary* dictionary);

/* The text with escapes for all of its control characters; null for null. */
Owned<const BQString> onOneLine(const BQString* text);

/* A new string, owned by the caller, from a format and arguments already started. */
const BQString* vxCreateString(const char* format, va_list arguments);

}  // namespace vx

#endif
