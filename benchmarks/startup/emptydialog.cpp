// The yardstick of the start-up benchmark: what any Qt program with a window of that size costs.

#include <QApplication>
#include <QDialog>

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    QDialog dialog;
    dialog.setFixedSize(800, 600);
    dialog.show();
    return QApplication::exec();
}
