#include "vantile/platform/linux/kind_desk.h"

#include "vantile/foundation/guard.h"

namespace vantile {

void KindDesk::serve() {
  guarded("kinds of files", [this] {
    while (!isClosed_) {
      if (const auto name = question_.take()) {
        answer_.put({look_(*name)});
        answered_.wake();
      } else {
        asked_.sleep(std::nullopt);
      }
    }
  });
  hasLeft_ = true;
  answered_.wake();
}

void KindDesk::close() {
  isClosed_ = true;
  asked_.wake();
}

std::optional<UsageKind> KindDesk::of(const std::string& name) {
  if (hasLeft_) return look_(name);
  answer_.take();
  question_.put(name);
  asked_.wake();
  while (true) {
    if (const auto answer = answer_.take()) return answer->kind;
    if (hasLeft_) return look_(name);
    answered_.sleep(std::nullopt);
  }
}

}  // namespace vantile
