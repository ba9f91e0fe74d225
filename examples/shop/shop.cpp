// The service of a shop: four threads that tell one log what happens.
//
// Usage: shop FOLDER [ROUNDS]
// FOLDER holds shop.ldf, shop_site.ldf and shop.conf, as the build makes them; logs/ and events.cnt are made in it.
#include <qzlog.h>

#include <charconv>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <string>
#include <thread>
#include <vector>

#include "departments.h"
#include "event_log.h"
#include "events.h"

namespace {

constexpr unsigned kRounds = 100;
constexpr void (*kDepartments[])(EventLog&, unsigned) = {take_orders, take_payments, look_after_stock, serve_customers};

struct Arguments {
  std::string folder;
  unsigned rounds = kRounds;
};

bool read_arguments(int argc, char** argv, Arguments& arguments) {
  if (argc < 2 || argc > 3) return false;
  arguments.folder = argv[1];
  if (argc == 2) return true;
  const char* const end = argv[2] + std::strlen(argv[2]);
  const auto [last, error] = std::from_chars(argv[2], end, arguments.rounds);
  return error == std::errc() && last == end;
}

/// The settings of the process, made before any thread logs.
void configure(const std::string& folder) {
  qz_LOG_LogConfig::SetCodePage("UTF-8");
  qz_LOG_LogConfig::SetActionAttrLenExceed(QZ_ACTION_TRUNCATE);  // a customer's long words are no reason to log nothing
  qz_LOG_LogConfig::SetActionOutOfRange(QZ_OUT_OF_RANGE_REFUSE);  // a number that does not fit is a mistake of ours
  qz_LOG_LogConfig::SetDefinitionPath((folder + "/shop.ldf").c_str());
  qz_LOG_LogConfig::SetAuxDefinitionPath((folder + "/shop_site.ldf").c_str());
  qz_LOG_LogConfig::SetConfigurationSource((folder + "/shop.conf").c_str(), QZ_CONFIGURATION_FILE_MAY_BE_MISSING);
}

qz_LOG_LogEntry service_started() {
  qz_LOG_LogEntry entry(kServiceStarted, kNotice);
  entry.AddAttrib1u("Threads", std::size(kDepartments));
  return entry;
}

qz_LOG_LogEntry service_stopped(unsigned rounds) {
  qz_LOG_LogEntry entry(kServiceStopped, kNotice);
  entry.AddAttrib4u("Rounds", rounds);
  return entry;
}

void work(EventLog& log, unsigned rounds) {
  std::vector<std::thread> threads;
  for (const auto department : kDepartments) threads.emplace_back(department, std::ref(log), rounds);
  for (std::thread& thread : threads) thread.join();
}

/// Whether every entry that was wanted is in the log and in the counter.
bool serve(const Arguments& arguments) {
  std::filesystem::create_directories(arguments.folder + "/logs");
  EventLog log(arguments.folder);
  log.tell(service_started());
  work(log, arguments.rounds);
  if (!log.flush()) std::cout << "Entries are still on their way.\n";
  log.tell(service_stopped(arguments.rounds));
  const EventLogResult result = log.close();
  std::cout << "Entries: " << result.written << " written, " << result.filtered << " filtered, " << result.failed
            << " failed, " << result.uncounted << " not counted\n";
  return result.failed == 0 && result.uncounted == 0;
}

}  // namespace

int main(int argc, char** argv) {
  // A mistake in what a thread logs ends the service: the text says which one.
  qz_LOG_install_terminate_text();
  Arguments arguments;
  if (!read_arguments(argc, argv, arguments)) {
    std::cerr << "Usage: shop FOLDER [ROUNDS]\n";
    return 2;
  }
  try {
    configure(arguments.folder);
    return serve(arguments) ? 0 : 1;
  } catch (const QZX_logging_all& error) {
    std::cerr << "shop: " << error.get_message() << '\n';
  } catch (const std::filesystem::filesystem_error& error) {
    std::cerr << "shop: " << error.what() << '\n';
  }
  return 1;
}
