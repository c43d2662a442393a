// An application with a window but without widgets.

#include <QGuiApplication>
#include <QRasterWindow>

int main(int argc, char *argv[])
{
    QGuiApplication application(argc, argv);
    QRasterWindow window;
    window.setObjectName("bareWindow");
    window.setTitle("Bare");
    window.resize(200, 100);
    window.show();
    return QGuiApplication::exec();
}
