#include "app/Cli.h"

int main(int argc, char** argv) {
    return Cli_Run(argc, argv);
}
