// SPDX-License-Identifier: GPL-3.0-or-later
#include <cstdlib>

#include "mysqlclient/Waiting.h"
#include "shell/windows/Desktop.h"

int main(int argc, char** argv) {
  const int status = velmora::RunDesktop(argc, argv);
  // A login that was given up may still wait for its server, by means that the end of the program takes away.
  if (velmora::TServerThread::Left() > 0) std::_Exit(status);
  return status;
}
