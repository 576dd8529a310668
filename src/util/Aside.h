// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Work that may keep whoever asks for it waiting for long: on files, which may be large or far away, and on servers by
// the clients of other makers. As it stands the thread that asks does it; a program with windows has it done by another
// and lets messages run meanwhile. It is a wait all the same: order, results and errors are as without it.

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <type_traits>
#include <utility>

#include "util/Errors.h"

namespace velmora {

enum class ESlow { Files, Server };  // what is waited for, to tell the user

// How such work is done and waited for.
class TAside {
 public:
  virtual ~TAside() = default;
  // Raises what `work` raises. Raises ECancelled where the work was left to its end, which may come much later and is
  // heard of by nobody; so it owns what it uses.
  virtual void Do(ESlow /*kind*/, const std::function<void()>& work) { work(); }
  // The last that is done with something, from destructors, too: raises nothing, lets no messages run, and does not
  // wait for long. The work owns what it uses likewise.
  virtual void End(std::function<void()> work) noexcept;
};

TAside& Aside();

// Makes `aside` the one that Aside() gives; the former one comes back when the guard ends.
class TAsideGuard {
 public:
  explicit TAsideGuard(TAside& aside);
  ~TAsideGuard();
  TAsideGuard(const TAsideGuard&) = delete;
  TAsideGuard& operator=(const TAsideGuard&) = delete;

 private:
  TAside* former_;
};

// In work that is done aside, once a record or a block: raises ECancelled where nobody waits for it any more.
void StopIfLeft();

// While this lives, StopIfLeft on this thread goes by `left`.
class TLeftMark {
 public:
  explicit TLeftMark(const std::atomic<bool>& left);
  ~TLeftMark();
  TLeftMark(const TLeftMark&) = delete;
  TLeftMark& operator=(const TLeftMark&) = delete;
};

// While this lives, `waits` is set: what its owner works with is another thread's.
class TWaitMark {
 public:
  explicit TWaitMark(bool& waits) : waits_(waits), outer_(std::exchange(waits, true)) {}
  ~TWaitMark() { waits_ = outer_; }
  TWaitMark(const TWaitMark&) = delete;
  TWaitMark& operator=(const TWaitMark&) = delete;

 private:
  bool& waits_;
  bool outer_;
};

// Does `work` aside and gives what it gives.
template <class Work>
std::invoke_result_t<Work> DoAside(ESlow kind, Work work) {
  using TResult = std::invoke_result_t<Work>;
  if constexpr (std::is_void_v<TResult>) {
    Aside().Do(kind, std::move(work));
  } else {
    const auto result = std::make_shared<std::optional<TResult>>();
    Aside().Do(kind, [result, work = std::move(work)] { result->emplace(work()); });
    return std::move(**result);
  }
}

// An object that is worked with aside, made by the first work. Work that was left keeps it, and the next begins with
// another.
template <class T>
class TAsideObject {
 public:
  using TMaker = std::function<std::unique_ptr<T>()>;

  TAsideObject(ESlow kind, TMaker make) : kind_(kind), make_(std::move(make)) {}

  // `work` takes a T& and owns what else it uses.
  template <class Work>
  std::invoke_result_t<Work, T&> Do(Work work) {
    try {
      return DoAside(kind_, [object = object_, make = make_, work = std::move(work)] {
        if (!*object) *object = make();
        return work(**object);
      });
    } catch (const ECancelled&) {
      object_ = std::make_shared<std::unique_ptr<T>>();
      throw;
    }
  }

 private:
  ESlow kind_;
  TMaker make_;
  std::shared_ptr<std::unique_ptr<T>> object_ = std::make_shared<std::unique_ptr<T>>();
};

}  // namespace velmora
