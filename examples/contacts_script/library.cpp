// The script for "vantrel run LIBRARY MAP DIRECTORY -- contacts".

#include "contactsscript.h"

#include "qt/scriptlibrary.h"

#include <cstdio>

int vantrel_main(Vantrel::Inspector *, int argc, char **argv)
{
    if (argc != 3) {
        std::fprintf(stderr, "the script takes OBJECTMAP and DIRECTORY\n");
        return 2;
    }
    driveContacts(QString::fromLocal8Bit(argv[1]), QString::fromLocal8Bit(argv[2]));
    return 0;
}
