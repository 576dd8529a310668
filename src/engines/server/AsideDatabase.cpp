// SPDX-License-Identifier: GPL-3.0-or-later
#include "engines/server/AsideDatabase.h"

#include <type_traits>
#include <utility>

#include "util/Aside.h"

namespace velmora {

namespace {

class TAsideDatabase final : public TIBODatabase {
 public:
  TAsideDatabase(std::unique_ptr<TIBODatabase> inner, std::function<void()> prepare)
      : inner_(std::move(inner)), prepare_(std::move(prepare)) {}
  ~TAsideDatabase() override { DoDisconnect(); }

  // While it is waited for, what it holds is another thread's.
  bool GetConnected() const override { return waits_ || inner_->GetConnected(); }
  bool InTransaction() const override { return !waits_ && inner_->InTransaction(); }
  void StartTransaction() override {
    Do([](TIBODatabase& inner) { inner.StartTransaction(); });
  }
  void Commit() override {
    Do([](TIBODatabase& inner) { inner.Commit(); });
  }
  void Rollback() override {
    Do([](TIBODatabase& inner) { inner.Rollback(); });
  }
  std::unique_ptr<TMemDataset> Read(const std::string& sql) override {
    return Do([sql](TIBODatabase& inner) { return inner.Read(sql); });
  }
  std::int64_t Execute(const std::string& sql) override {
    return Do([sql](TIBODatabase& inner) { return inner.Execute(sql); });
  }
  std::unique_ptr<TIBODatabase> NewDatabase() const override {
    auto database = std::make_unique<TAsideDatabase>(inner_->NewDatabase(), prepare_);
    database->ConnectTimeout = ConnectTimeout;
    database->LockTimeout = LockTimeout;
    return database;
  }

 private:
  void DoConnect() override {
    prepare_();
    inner_->DatabaseName = DatabaseName;
    inner_->Password = Password;
    inner_->ConnectTimeout = ConnectTimeout;
    inner_->LockTimeout = LockTimeout;
    for (const std::string_view name : {kServerParam, kUserNameParam}) inner_->SetParam(name, Param(name));
    Do([](TIBODatabase& inner) { inner.SetConnected(true); });
  }

  // A server that hangs keeps nobody waiting with its farewell.
  void DoDisconnect() override {
    if (!inner_->GetConnected()) return;
    std::shared_ptr<TIBODatabase> done = std::exchange(inner_, inner_->NewDatabase());
    Aside().End([done = std::move(done)] { done->SetConnected(false); });
  }

  template <class Call>
  std::invoke_result_t<Call, TIBODatabase&> Do(Call call) {
    const auto inner = inner_;
    const TWaitMark waits(waits_);
    try {
      return DoAside(ESlow::Server, [inner, call = std::move(call)] { return call(*inner); });
    } catch (const ECancelled&) {
      inner_ = inner->NewDatabase();
      throw;
    }
  }

  std::shared_ptr<TIBODatabase> inner_;
  std::function<void()> prepare_;
  bool waits_ = false;
};

}  // namespace

std::unique_ptr<TIBODatabase> NewAsideDatabase(std::unique_ptr<TIBODatabase> inner, std::function<void()> prepare) {
  return std::make_unique<TAsideDatabase>(std::move(inner), std::move(prepare));
}

}  // namespace velmora
