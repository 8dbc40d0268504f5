#!/usr/bin/env bash
# statics.sh CHECKER COMPILER WORK-FOLDER: what tools/statics accepts, and what it names, in small libraries.
set -euo pipefail
checker=$1 compiler=$2 work=$3

rm -rf "$work"
mkdir -p "$work"
cat >"$work/held.cpp" <<'END'
namespace norvik {
namespace kernel {
template <class Make>
auto& madeOnce(Make make) {
  static auto& made = *make();
  return made;
}
}  // namespace kernel
struct Registry {
  Registry();
  ~Registry();
};
inline const Registry& ofNamespace = *new Registry;
Registry& held() {
  return kernel::madeOnce([] { return new Registry; });
}
Registry& ofThread() {
  static thread_local Registry own;
  return own;
}
int& constant() {
  static constinit int count = 0;
  return ++count;
}
END
{
  cat "$work/held.cpp"
  cat <<'END'
namespace {
Registry& hidden() {
  static auto& registry = *new Registry;
  return registry;
}
}  // namespace
Registry& shown(int) {
  static Registry registry;
  return registry;
}
Registry& insideTheMaking() {
  struct Maker {
    static Registry* make() {
      static Registry& inner = hidden();
      return &inner;
    }
  };
  return kernel::madeOnce([] { return Maker::make(); });
}
}  // namespace norvik
END
} >"$work/plain.cpp"
echo '}  // namespace norvik' >>"$work/held.cpp"

# library NAME FLAG...: compiles NAME.cpp.
library() {
  local name=$1
  shift
  "$compiler" -std=c++20 -O2 -fPIC -shared "$@" "$work/$name.cpp" -o "$work/$name.so"
}
# expect STATUS NAME LINE...: what the checker says of the library.
expect() {
  local status=$1 name=$2 said actual=0
  shift 2
  said=$("$checker" "$work/$name.so") || actual=$?
  [ "$actual" -eq "$status" ] || { printf 'status %d, expected %d: %s\n' "$actual" "$status" "$said"; exit 1; }
  diff <(printf '%s\n' "$@" | sort) <(printf '%s\n' "$said" | sort)
}

library held
expect 0 held 'statics: a fork waits for each of 1 objects that are made when they are first asked for'

library plain
expect 1 plain 'statics: a fork does not wait for norvik::(anonymous namespace)::hidden()::registry' \
  'statics: a fork does not wait for norvik::shown(int)::registry' \
  'statics: a fork does not wait for norvik::insideTheMaking()::Maker::make()::inner'

library held -s
expect 2 held "statics: $work/held.so names nothing that kernel::madeOnce makes; is it stripped?"
