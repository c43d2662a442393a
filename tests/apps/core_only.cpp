// An application of Qt that has no GUI.

#include <QCoreApplication>

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    return 0;
}
