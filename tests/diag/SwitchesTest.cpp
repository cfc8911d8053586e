#include "diag/Switches.h"

#include <gtest/gtest.h>

#include <cstdlib>

#include <sys/wait.h>
#include <unistd.h>

namespace {

/* Sets or removes a variable. */
void setVariable(const char* name, const char* value) {
  if (value == nullptr) {
    unsetenv(name);
  } else {
    setenv(name, value, 1);
  }
}

/* The switches of a process with these variables: 1 for the log, 2 for verbose messages. */
int switchesWith(const char* debug, const char* verbose) {
  pid_t child = fork();
  if (child == 0) {
    setVariable("VXDebug", debug);
    setVariable("VXDebugVerbose", verbose);
    bool wereOff = vx::gVXDebug == 0 && vx::gVXDebugVerbose == 0;
    vx::vxInitStatics();
    int switches = vx::gVXDebug + 2 * vx::gVXDebugVerbose;
    setVariable("VXDebug", debug == nullptr ? "" : nullptr);
    vx::vxInitStatics();
    bool stayed = switches == vx::gVXDebug + 2 * vx::gVXDebugVerbose;
    _exit(wereOff && stayed ? switches : 100);
  }
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST(Switches, AreOnWhenTheVariableIsPresentAndAreReadOnce) {
  EXPECT_EQ(switchesWith(nullptr, nullptr), 0);
  EXPECT_EQ(switchesWith("", nullptr), 1) << "the value is not looked at";
  EXPECT_EQ(switchesWith("0", "no"), 3);
  EXPECT_EQ(switchesWith(nullptr, "1"), 2);
}

}  // namespace
