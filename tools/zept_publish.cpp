// The data publisher's tool: turns a plain data file (dbase.xml and its
// siblings) into the .enc container the program reads.
//   zept_publish <plain file> <output.enc>
#include <cstdio>
#include <exception>

#include <fmt/format.h>

#include "publish_lib.h"

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fputs("usage: zept_publish <plain file> <output.enc>\n", stderr);
        return 2;
    }
    try {
        tfx::publish::gf_encryptFile(argv[1], argv[2]);
    } catch (const std::exception& e) {
        fmt::print(stderr, "zept_publish: {}\n", e.what());
        return 1;
    }
    return 0;
}
