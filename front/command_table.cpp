#include "front/command_table.h"

#include <cstring>

std::int32_t run_command(int argument_count, Arguments arguments, std::span<const Command> commands,
                         void (*print_usage)()) {
  for (const Command& command : commands) {
    if (command.argument_count != argument_count) continue;
    if (command.word == nullptr || std::strcmp(arguments[command.word_index], command.word) == 0) {
      if (command.action != nullptr) return command.action(arguments);
      print_usage();
      return 0;
    }
  }
  print_usage();
  return -1;
}
