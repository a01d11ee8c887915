// Runs one service of a machine and watches it: quoril-service-host TREE SERVICE. Started by the service
// manager of the tree; docs/service-handshake.md describes what it does.

#include "platform/tree/tree_service_host.h"

#include <QString>

#include <cstdio>
#include <unistd.h>

int main(int argc, char** argv)
{
    if (argc != 3) {
        std::fputs("usage: quoril-service-host TREE SERVICE\n", stderr);
        return 2;
    }
    return quoril::runServiceHost(QString::fromLocal8Bit(argv[1]), QString::fromUtf8(argv[2]), STDOUT_FILENO);
}
