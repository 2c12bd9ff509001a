// Program entry: everything happens in the program frame.
#include "app/session.h"

int main(int argc, char** argv) {
    return tfx::gf_programEntry(argc, argv);
}
