// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The errors of the program. All carry a message for the user and nothing else; one place, the roof, shows it.

#include <concepts>
#include <cstdint>
#include <exception>
#include <stdexcept>
#include <string>

namespace velmora {

// The one error type: an exception with a message.
class EVelmora : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// An operation that the engine does not provide was called.
class EAbstractError : public EVelmora {
 public:
  EAbstractError();
};

// A position outside a list: "List index out of bounds (%d)".
class EListError : public EVelmora {
 public:
  explicit EListError(std::int64_t index);
};

// A text that is no number of the wanted kind: "'%s' is not a valid integer value".
class EConvertError : public EVelmora {
 public:
  using EVelmora::EVelmora;
};

// Ends the operation under way; the roof shows nothing.
class EAbort : public EVelmora {
 public:
  EAbort();

 protected:
  using EVelmora::EVelmora;
};

// The user has ended the operation under way.
class ECancelled : public EAbort {
 public:
  ECancelled();
};

// An error of a MySQL server or client, with its published number; 0 where there is none.
class EMySqlException : public EVelmora {
 public:
  using EVelmora::EVelmora;
  EMySqlException(int number, const std::string& message) : EVelmora(message), number_(number) {}
  int Number() const { return number_; }

 private:
  int number_ = 0;
};

// An error of the transport below a client, with the number of a client error; 0 where there is none.
class SocketException : public EVelmora {
 public:
  using EVelmora::EVelmora;
  SocketException(int number, const std::string& message) : EVelmora(message), number_(number) {}
  int Number() const { return number_; }

 private:
  int number_ = 0;
};

[[noreturn]] void RaiseError(const std::string& message);  // raises EVelmora
[[noreturn]] void RaiseAbstract();                         // raises EAbstractError

// Runs `body`, then `end` whether `body` raised or not; then passes on the error of `body`. An error of `end` itself
// passes on too, in place of that of `body`. For ends that do work of their own; what cannot fail is left to
// destructors.
template <std::invocable Body, std::invocable End>
void RunGuarded(Body&& body, End&& end) {
  std::exception_ptr error;
  try {
    body();
  } catch (...) {
    error = std::current_exception();
  }
  end();
  if (error) std::rethrow_exception(error);
}

}  // namespace velmora
