#pragma once

#include <QApplication>

// The application object. initialise() creates the managers every later
// part relies on, in their fixed order; the destructor deletes them in the
// reverse order, with the log last so that everything can log while it goes.
class MainApplication : public QApplication
{
    Q_OBJECT
public:
    MainApplication(int& argc, char** argv);
    ~MainApplication() override;

    void initialise();

    bool initialised = false;
};
