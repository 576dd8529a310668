#include "shell/windows/Desktop.h"

int main(int argc, char** argv) { return velmora::RunDesktop(argc, argv); }
