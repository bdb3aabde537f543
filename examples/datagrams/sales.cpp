// A till that logs its sales as objects, for a process on the same machine. libSaleRenderer.so is beside the program.
//
//   java examples/datagrams/Receiver.java 9362 &
//   sales <sales.xml>

#include <iostream>
#include <string>

#include "examples/datagrams/Sale.h"
#include "log4vrk/log4vrk.h"

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: sales <sales.xml>\n";
    return 2;
  }
  const std::string program = argv[0];
  const std::string::size_type slash = program.rfind('/');
  const std::string directory = slash == std::string::npos ? "." : program.substr(0, slash);
  VRKConfigurationFactory::getInstance().addLibraryDirectory(directory.c_str());

  if (LOG4VRKConfigurator::initialize(argv[1]) != 1) {
    std::cerr << LOG4VRKConfigurator::getProblems().toUtf8() << "sales: " << argv[1] << " was not applied\n";
    return 1;
  }
  LOGLogger* const logger = LOGManager::getLogger("shop.till");
  Sale sales[] = {{"tea", 2, 798}, {"caf\u00e9 cr\u00e8me", 1, 450}, {"", 0, -1}, {"\U0001F375 matcha", 3, 5000000000}};
  for (Sale& sale : sales) logger->info(&sale);
  LOG4VRKConfigurator::shutdown();
}
