// The application and the script in one process: contacts_inprocess MAP DIRECTORY

#include "contactsscript.h"
#include "contactswindow.h"

#include "objectmodel/inspector.h"

#include "qt/script.h"
#include "qt/wrapper.h"

#include <QApplication>

#include <cstdio>

int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    if (argc != 3) {
        std::fprintf(stderr, "usage: %s OBJECTMAP DIRECTORY\n", argv[0]);
        return 2;
    }
    ContactsWindow window;
    window.show();
    if (!Vantrel::QtWrapper::install()) {
        std::fprintf(stderr, "%s\n", qUtf8Printable(Vantrel::Inspector::self()->lastError()));
        return 1;
    }
    const QString error = Vantrel::QtWrapper::runScript(
        [&] { driveContacts(QString::fromLocal8Bit(argv[1]), QString::fromLocal8Bit(argv[2])); });
    if (!error.isEmpty()) {
        std::fprintf(stderr, "the script failed: %s\n", qUtf8Printable(error));
    }
    return error.isEmpty() ? 0 : 1;
}
