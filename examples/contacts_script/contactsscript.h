#ifndef CONTACTSSCRIPT_H
#define CONTACTSSCRIPT_H

#include <QString>

/**
 * Drives the application contacts, which must have been started in this process
 * and not been touched yet, and leaves transcript, pictures and index.html in
 * @p directory. To be called as a script. Throws a std::exception when the
 * application does not do what it should.
 */
void driveContacts(const QString &objectMap, const QString &directory);

#endif // CONTACTSSCRIPT_H
