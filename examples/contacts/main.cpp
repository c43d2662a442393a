#include "contactswindow.h"

#include <QApplication>

int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    QApplication::setApplicationName("contacts");
    ContactsWindow window;
    window.show();
    return QApplication::exec();
}
