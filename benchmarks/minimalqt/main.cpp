// The smallest Qt Widgets program: what starting any program with Qt costs on this machine. Start/… is read
// beside it.
#include <QApplication>
#include <QWidget>

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    QWidget window;
    window.resize(960, 640);
    window.show();
    return QApplication::exec();
}
