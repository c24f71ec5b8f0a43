/** @file
 *  The version of the send-fax user interface: of this header, of qxfaxui.dll and of all that is shipped with it. Read
 *  by C, C++ and resource compilers, and by the build.
 */
#ifndef QXFAX_VERSION_H
#define QXFAX_VERSION_H

#define QXFAX_VERSION_MAJOR 1
#define QXFAX_VERSION_MINOR 0
#define QXFAX_VERSION_PATCH 0

/** Grows with each release: compare it with (major * 10000 + minor * 100 + patch). */
#define QXFAX_VERSION (QXFAX_VERSION_MAJOR * 10000 + QXFAX_VERSION_MINOR * 100 + QXFAX_VERSION_PATCH)

#endif
