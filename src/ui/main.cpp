#include "FerroxMain.h"

int main(int argc, char** argv)
{
    return runFerrox(argc, argv);
}
