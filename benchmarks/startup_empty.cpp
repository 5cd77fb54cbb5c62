// The yardstick of the start-up benchmark: a Qt Widgets program with an empty main window.

#include <QApplication>
#include <QMainWindow>

#include <cstdlib>

int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    QMainWindow window;
    std::_Exit(0);
}
