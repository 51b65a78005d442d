// The three error modes of every procedure, as one mechanism.
//
// Each procedure of the system chooses, on entry, what a failure inside it
// means, from the two build flags:
//   InterpFlag on   -> no trap: the failure propagates and ends the program
//                      with the platform's own report (an uncaught exception);
//   else DebugFlag  -> ReportError(procedure name) writes the error report to
//                      the log and shows "Error, an error was encountered in
//                      <name>- check log"; the procedure is left;
//   neither         -> the failure vanishes silently.
//
// The original resumed with the statement after the failing one. C++ has no
// such resumption; here a failure leaves the procedure (returning its fallback
// value), which is the closest faithful behaviour: the rest of the program
// carries on as before, and only the failing procedure's remaining work is lost.
//
// A failure is an exception derived from std::exception. Code does not throw
// for ordinary conditions (a missing key, a cancelled dialog): those return.
// Throw RuntimeError for the faults that were run-time errors of the original
// (a table overflow, a failed allocation, a file that cannot be opened).
#pragma once

#include <exception>
#include <stdexcept>
#include <string>
#include <utility>

namespace tl {

class RuntimeError : public std::runtime_error {
  public:
    RuntimeError(int number, const std::string& description, std::string source = "Tracelab")
        : std::runtime_error(description), number_(number), source_(std::move(source)) {}
    int number() const { return number_; }
    const std::string& source() const { return source_; }

  private:
    int number_;
    std::string source_;
};

// Common run-time error numbers, as an engineer reading the log knows them.
inline constexpr int kErrSubscriptOutOfRange = 9;
inline constexpr int kErrOutOfMemory = 7;
inline constexpr int kErrFileNotFound = 53;
inline constexpr int kErrBadFileMode = 54;
inline constexpr int kErrPathFileAccess = 75;
inline constexpr int kErrInputPastEnd = 62;
inline constexpr int kErrOverflow = 6;

// Writes the error report of the exception in flight to the log and shows the
// program's message. Call only from inside a catch block.
void ReportError(const std::string& procedureName);

// True when failures must propagate (InterpFlag).
bool ErrorsPropagate();

// Runs body() under the procedure's error mode. Returns true when the body ran
// to its end, false when a failure was trapped.
template <class Body>
bool Procedure(const char* name, Body&& body) {
    if (ErrorsPropagate()) {
        body();
        return true;
    }
    try {
        body();
        return true;
    } catch (const std::exception&) {
        ReportError(name);
        return false;
    }
}

// As Procedure, for a body that returns a value; a trapped failure returns
// the fallback.
template <class R, class Body>
R ProcedureValue(const char* name, R fallback, Body&& body) {
    if (ErrorsPropagate()) return body();
    try {
        return body();
    } catch (const std::exception&) {
        ReportError(name);
        return fallback;
    }
}

}  // namespace tl
