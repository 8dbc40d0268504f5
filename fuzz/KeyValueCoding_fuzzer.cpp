// fuzz/KeyValueCoding_fuzzer.cpp - key paths that read, set and observe a small graph of objects.
//
// The graph is created twice. The key paths use one, the model uses the other.
//
// - Reading gives the same value, or raises an exception of the same name. So does setting, and afterwards the two
//   graphs are still equal.
// - An observer is notified of exactly the changes that concern its path, with the values before and after, and of none
//   after it is removed or destroyed.
// - Adding and removing an observer is refused if the model says so.
// - At the end only objects that hold one another in a circle are left, and none after the circles are opened.
#include "fuzz/KeyValueGenerator.h"
#include "fuzz/KeyValueGraph.h"
#include "fuzz/KeyValueModel.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>
#include <utility>
#include <vector>

using namespace norvik;
using namespace norvik::fuzz;

namespace {

std::string trace;  ///< the operations so far, for the report of a failure

[[noreturn]] void fail(const char* what) {
  std::fprintf(stderr, "%s\n%s", trace.c_str(), what);
  std::fprintf(stderr, "\n");
  std::abort();
}

void require(bool holds, const char* what) {
  if (!holds) fail(what);
}

struct Run {
  World world;
  Model model;
  std::array<Ref<FuzzedWatcher>, 3> watchers{make<FuzzedWatcher>(0), make<FuzzedWatcher>(1), make<FuzzedWatcher>(2)};
  int watcherCount = 3;

  /// The same value for both graphs.
  std::pair<Value, Value> take(Input& input) {
    Input again = input;
    Value used = takeValue(input, world);
    return {std::move(used), takeValue(again, model.world)};
  }

  template <class Use, class Expect>
  void compare(Use&& use, Expect&& expect) {
    std::optional<NSString> raised;
    std::vector<NSString> mayRaise;
    Value value, expected;
    heard.clear();
    model.expected.clear();
    try {
      expected = expect();
    } catch (const NSException& e) {
      mayRaise = {e.name()};
    } catch (const Model::Raised& all) {
      mayRaise = all.names;
    }
    try {
      value = use();
    } catch (const NSException& e) {
      trace += std::string("  ") + e.what() + "\n";
      raised = e.name();
    }
    require(raised.has_value() == !mayRaise.empty(), raised ? "it raises" : "it does not raise");
    require(!raised || std::ranges::find(mayRaise, *raised) != mayRaise.end(),
            "it raises an exception of another name");
    require(same(value, expected), "another value");
    std::vector<Call> calls = std::move(heard);
    for (const Call& call : model.expected) {
      const auto found = std::ranges::find_if(calls, [&](const Call& each) { return sameCall(each, call); });
      require(found != calls.end(), "an observer was not told");
      calls.erase(found);
    }
    require(calls.empty(), "an observer was told too much");
    heard.clear();
    model.expected.clear();
  }

  void read(Input& input) {
    const auto [target, modelTarget] = take(input);
    const NSString path = takePath(input);
    const std::vector<NSString> keys = splitByModel(path);
    note("read", target, path);
    compare([&, &target = target] { return valueForKeyPath(target, path); },
            [&, &modelTarget = modelTarget] { return valueByModel(modelTarget, keys); });
    if (keys.size() > 1) return;
    compare([&, &target = target] { return valueForKey(target, path); },
            [&, &modelTarget = modelTarget] { return valueByModel(modelTarget, path); });
  }

  void set(Input& input) {
    const auto [target, modelTarget] = take(input);
    const NSString path = takePath(input);
    const auto [value, modelValue] = take(input);
    // A dictionary that contains itself has no end.
    if (!target.isObject() || value.object<NSMutableDictionary>() != nullptr) return;
    const std::vector<NSString> keys = splitByModel(path);
    note("set", target, path);
    trace += "  to " + value.description().utf8() + "\n";
    compare(
        [&, &target = target, &value = value] {
          target.object()->setValue_forKeyPath(value, path);
          return Value();
        },
        [&, &modelTarget = modelTarget, &modelValue = modelValue] {
          if (keys.size() > greatestKeyCount) raiseInvalid();
          model.set(modelTarget, Keys(keys), modelValue);
          return Value();
        });
    require(alike(world, model.world), "the graphs differ");
    compare([&, &target = target] { return valueForKeyPath(target, path); },
            [&, &modelTarget = modelTarget] { return valueByModel(modelTarget, keys); });
  }

  /// Puts a dictionary into a node by the node's accessor, which notifies as for any other change.
  void holdMap(Input& input) {
    const unsigned node = input.below(4), map = input.below(2);
    trace += "hold map " + std::to_string(map) + " in " + world.nodes[node]->description().utf8() + "\n";
    compare(
        [&] {
          world.nodes[node]->setMap(world.maps[map]);
          return Value();
        },
        [&] {
          const Ref<FuzzedNode>& holder = model.world.nodes[node];
          model.announce(holder, "map", [&] { holder->setMap(model.world.maps[map]); });
          return Value();
        });
  }

  void observe(Input& input) {
    const unsigned which = input.below(7), watcher = input.below(3), context = input.below(2);
    const auto options = static_cast<NSKeyValueObservingOptions>(input.below(16));
    const NSString path = takePath(input);
    const std::vector<NSString> keys = splitByModel(path);
    if (model.watches.size() >= 12) return;
    const Value root = rootIn(world, which), modelRoot = rootIn(model.world, which);
    const Watch watch{path,
                      keys,
                      Weak<NSObject>(root.object()),
                      Weak<NSObject>(modelRoot.object()),
                      watchers[watcher]->number,
                      static_cast<int>(context),
                      options};
    note("observe", root, path);
    trace += "  options " + std::to_string(options) + ", watcher " + std::to_string(watch.watcher) + "\n";
    compare(
        [&] {
          root.object()->addObserver(*watchers[watcher], path, options, contextOf(watch.context));
          return Value();
        },
        [&] {
          model.checkPath(modelRoot, keys);
          model.watches.push_back(watch);
          if (watch.wants(NSKeyValueObservingOptionInitial)) {
            const bool wantsNew = watch.wants(NSKeyValueObservingOptionNew);
            model.expect(watch, modelRoot, {}, wantsNew ? shown(valueByModel(modelRoot, Keys(keys))) : Value(), false);
          }
          return Value();
        });
  }

  /// Removes an existing observation, or an arbitrary one.
  void remove(Input& input) {
    unsigned watcher = input.below(3);
    int context = static_cast<int>(input.below(2));
    const bool saysContext = input.below(2) == 1;
    Value root, modelRoot;
    NSString path;
    if (const unsigned which = input.below(16); which < model.watches.size()) {
      const Watch& watch = model.watches[which];
      root = watch.used.lock();
      modelRoot = watch.root.lock();
      path = watch.path;
      context = watch.context;
      if (model.isAlive(watch.watcher)) {
        watcher = static_cast<unsigned>(std::ranges::find(model.watchers, watch.watcher) - model.watchers.begin());
      }
      if (!root.isObject()) return;
    } else {
      const unsigned object = input.below(7);
      root = rootIn(world, object);
      modelRoot = rootIn(model.world, object);
      path = takePath(input);
    }
    note("remove", root, path);
    compare(
        [&] {
          if (saysContext) {
            root.object()->removeObserver(*watchers[watcher], path, contextOf(context));
          } else {
            root.object()->removeObserver(*watchers[watcher], path);
          }
          return Value();
        },
        [&] {
          const auto latest = std::find_if(model.watches.rbegin(), model.watches.rend(), [&](const Watch& watch) {
            return watch.root.lock().get() == modelRoot.object() && watch.watcher == watchers[watcher]->number &&
                   watch.path == path && (!saysContext || watch.context == context);
          });
          if (latest == model.watches.rend()) NSException::raise(NSRangeException, "by the model");
          model.watches.erase(std::next(latest).base());
          return Value();
        });
  }

  void forgetWatcher(Input& input) {
    const unsigned which = input.below(3);
    trace += "forget watcher " + std::to_string(watchers[which]->number) + "\n";
    watchers[which] = nullptr;
    watchers[which] = make<FuzzedWatcher>(watcherCount);
    model.watchers[which] = watcherCount++;
  }

  void forgetNode(Input& input) {
    const unsigned which = input.below(4);
    if (world.all.size() > 30) return;
    trace += "forget " + world.nodes[which]->description().utf8() + "\n";
    world.nodes[which] = nullptr;
    world.nodes[which] = world.newNode();
    model.world.nodes[which] = nullptr;
    model.world.nodes[which] = model.world.newNode();
    for (const Watch& watch : model.watches) require(!watch.used.lock() == !watch.root.lock(), "a node stays");
    std::erase_if(model.watches, [](const Watch& watch) { return !watch.root.lock(); });
    require(alike(world, model.world), "the graphs differ");
  }

  static Value rootIn(const World& world, unsigned which) {
    if (which < 4) return world.nodes[which];
    return which == 4 ? Value(world.leaf) : Value(world.maps[which - 5]);
  }

  static void note(const char* what, const Value& target, const NSString& path) {
    trace += std::string(what) + " \"" + path.utf8().substr(0, 300) + "\" of " + target.description().utf8() + "\n";
  }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size > 2000) return 0;
  trace.clear();
  Input input{{data, size}};
  Run run;
  const bool removesFirst = input.below(2) == 1;
  for (int operations = 0; !input.isEmpty() && operations < 60; ++operations) {
    switch (input.below(12)) {
      case 0:
      case 1:
      case 2:
        run.read(input);
        break;
      case 3:
      case 4:
      case 5:
        run.set(input);
        break;
      case 6:
        run.holdMap(input);
        break;
      case 7:
      case 8:
        run.observe(input);
        break;
      case 9:
        run.remove(input);
        break;
      case 10:
        run.forgetWatcher(input);
        break;
      default:
        run.forgetNode(input);
        break;
    }
  }
  if (removesFirst) {
    for (const Watch& watch : run.model.watches) {
      const auto watcher = std::ranges::find(run.model.watchers, watch.watcher) - run.model.watchers.begin();
      const Ref<NSObject> root = watch.used.lock();
      if (!root || watcher == 3) continue;
      root->removeObserver(*run.watchers[static_cast<std::size_t>(watcher)], watch.path, contextOf(watch.context));
    }
  }
  require(alike(run.world, run.model.world), "the graphs differ");
  heard.clear();
  run.watchers = {};
  for (World* world : {&run.world, &run.model.world}) {
    open(*world);
    world->nodes.clear();
    require(isEmpty(*world), "a node is left");
  }
  return 0;
}
