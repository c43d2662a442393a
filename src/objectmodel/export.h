#ifndef VANTREL_EXPORT_H
#define VANTREL_EXPORT_H

#include <QtGlobal>

/** Marks what users of the shared library may link against; all else is hidden. */
#if defined(VANTREL_OBJECTMODEL_BUILD)
#define VANTREL_EXPORT Q_DECL_EXPORT
#else
#define VANTREL_EXPORT Q_DECL_IMPORT
#endif

#endif // VANTREL_EXPORT_H
