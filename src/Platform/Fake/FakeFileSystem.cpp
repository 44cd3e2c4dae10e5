#include "Platform/Fake/FakeFileSystem.h"

#include <algorithm>

namespace kiv {
namespace {

std::string parentOf(const std::string &path) {
    const auto slash = path.rfind('/');
    return slash == 0 ? "/" : path.substr(0, slash);
}

[[noreturn]] void fail(std::errc error) { throw std::system_error(std::make_error_code(error)); }

}  // namespace

FakeFileSystem::NodePtr FakeFileSystem::make(const std::string &path, Kind kind, State state) {
    const std::lock_guard lock(mutex_);
    if (path != "/") makeFolder(parentOf(path));
    const auto node = std::make_shared<Node>();
    node->kind = kind;
    node->inode = ++lastInode_;
    node->modified = ++clock_;
    node->now = node->onDevice = std::move(state);
    return names_[path] = onDevice_[path] = node;
}

void FakeFileSystem::makeFolder(const std::string &path) {
    const std::lock_guard lock(mutex_);
    if (!names_.count(path)) make(path, Kind::folder);
}

void FakeFileSystem::put(const std::string &path, Bytes bytes, const std::string &attributes) {
    make(path, Kind::file, {std::move(bytes), attributes});
}

void FakeFileSystem::link(const std::string &path, const std::string &target) {
    const std::lock_guard lock(mutex_);
    make(path, Kind::other)->linkTarget = target;
}

void FakeFileSystem::makeOther(const std::string &path) { make(path, Kind::other); }

void FakeFileSystem::protect(const std::string &path) {
    const std::lock_guard lock(mutex_);
    demand(path)->writable = false;
}

void FakeFileSystem::unprotect(const std::string &path) {
    const std::lock_guard lock(mutex_);
    demand(path)->writable = true;
}

void FakeFileSystem::setSticky(const std::string &folder) {
    const std::lock_guard lock(mutex_);
    demand(folder)->sticky = true;
}

void FakeFileSystem::vanish(const std::string &path) {
    const std::lock_guard lock(mutex_);
    const auto isBelow = [&](const auto &entry) { return entry.first == path || entry.first.starts_with(path + "/"); };
    std::erase_if(names_, isBelow);
    std::erase_if(onDevice_, isBelow);
}

bool FakeFileSystem::exists(const std::string &path) const {
    const std::lock_guard lock(mutex_);
    return names_.count(path) > 0;
}

FakeFileSystem::Bytes FakeFileSystem::bytes(const std::string &path) const {
    const std::lock_guard lock(mutex_);
    return demand(path)->now.bytes;
}

std::string FakeFileSystem::attributes(const std::string &path) const {
    const std::lock_guard lock(mutex_);
    return demand(path)->now.attributes;
}

std::vector<std::string> FakeFileSystem::names(const std::string &folder) const {
    const std::lock_guard lock(mutex_);
    std::vector<std::string> found;
    for (const auto &[path, node] : names_)
        if (path != "/" && parentOf(path) == folder) found.push_back(path.substr(path.rfind('/') + 1));
    return found;
}

void FakeFileSystem::failAt(int step, std::errc error, Lasting lasting) {
    const std::lock_guard lock(mutex_);
    steps_ = 0;
    failStep_ = step;
    error_ = error;
    lasting_ = lasting;
}

void FakeFileSystem::losePowerAt(int step) {
    const std::lock_guard lock(mutex_);
    steps_ = 0;
    powerStep_ = step;
}

void FakeFileSystem::heal() {
    const std::lock_guard lock(mutex_);
    steps_ = failStep_ = powerStep_ = 0;
}

int FakeFileSystem::steps() const {
    const std::lock_guard lock(mutex_);
    return steps_;
}

bool FakeFileSystem::failsNow(Need need) const {
    if (failStep_ == 0 || steps_ < failStep_) return false;
    return lasting_ == Lasting::on || (lasting_ == Lasting::full ? need == Need::space : steps_ == failStep_);
}

// Counts a step, during which the world is the caller's; at one that is not to be, does `half` of it and throws.
FakeFileSystem::Lock FakeFileSystem::step(Need need, const std::function<void()> &half) {
    Lock lock(mutex_);
    if (dead_) throw PowerLost();
    ++steps_;
    const bool fails = failsNow(need);
    dead_ = steps_ == powerStep_;
    if ((fails || dead_) && half) half();
    if (dead_) throw PowerLost();
    if (fails) fail(error_);
    return lock;
}

bool FakeFileSystem::survives(Survival survival, std::mt19937 &random) const {
    if (survival == Survival::anything) return random() % 2 == 0;
    return survival == Survival::everything || survival == Survival::namesOnly;
}

FakeFileSystem::State FakeFileSystem::survivor(const Node &node, Survival survival, std::mt19937 &random) const {
    if (survival == Survival::nothing || survival == Survival::namesOnly) return node.onDevice;
    if (survival != Survival::anything) return node.now;
    const auto any = [&]() -> const State & {
        const std::size_t choice = random() % (node.unsynced.size() + 1);
        return choice == 0 ? node.onDevice : node.unsynced[choice - 1];
    };
    State state{Bytes(any().bytes.size()), any().attributes};
    for (std::size_t i = 0; i < state.bytes.size(); ++i)
        if (const Bytes &source = any().bytes; i < source.size()) state.bytes[i] = source[i];
    return state;
}

void FakeFileSystem::restart(Survival survival, unsigned seed) {
    const std::lock_guard lock(mutex_);
    std::mt19937 random(seed);
    for (const NameChange &change : unsynced_)
        if (survives(survival, random)) apply(change, onDevice_);
    unsynced_.clear();
    for (auto &[path, node] : onDevice_) {
        node->now = node->onDevice = survivor(*node, survival, random);
        node->unsynced.clear();
        node->held.reset();
    }
    names_ = onDevice_;
    dead_ = false;
    heal();
}

class FakeFileSystem::OpenFile : public File {
public:
    OpenFile(FakeFileSystem &world, NodePtr node) : world_(world), node_(std::move(node)) { node_->held = hold_; }

    void write(std::span<const std::byte> bytes) override {
        const std::lock_guard lock(world_.mutex_);
        const bool grows = at_ + bytes.size() > node_->now.bytes.size();
        world_.step(grows ? Need::space : Need::nothing, [&] { put(bytes.first(bytes.size() / 2)); });
        put(bytes);
    }
    void rewind() override {
        const Lock lock = world_.step();
        at_ = 0;
    }
    void truncate(std::int64_t size) override {
        const Lock lock = world_.step();
        node_->now.bytes.resize(std::size_t(size));
        world_.changed(*node_);
    }
    void setModified(std::int64_t ns) override {
        const Lock lock = world_.step();
        world_.changed(*node_);
        node_->modified = ns;
    }
    void sync() override {
        const Lock lock = world_.step(Need::nothing, [&] { node_->dirty = false; });
        if (node_->dirty) node_->onDevice = node_->now;
        node_->unsynced.clear();
    }
    bool isHeld() const override { return world_.can_.locks; }

private:
    void put(std::span<const std::byte> bytes) {
        Bytes &all = node_->now.bytes;
        all.resize(std::max(all.size(), at_ + bytes.size()));
        std::copy(bytes.begin(), bytes.end(), all.begin() + std::ptrdiff_t(at_));
        at_ += bytes.size();
        world_.changed(*node_);
    }

    FakeFileSystem &world_;
    NodePtr node_;
    std::shared_ptr<int> hold_ = std::make_shared<int>();
    std::size_t at_ = 0;
};

class FakeFileSystem::OpenSource : public ByteSource {
public:
    OpenSource(FakeFileSystem &world, NodePtr node) : world_(world), node_(std::move(node)), size_(node_->now.bytes.size()) {}

    std::int64_t size() const override { return std::int64_t(size_); }
    std::size_t read(std::int64_t offset, std::span<std::byte> out) const override {
        const Lock lock = world_.step();
        return MemorySource(node_->now.bytes).read(offset, out);
    }

private:
    FakeFileSystem &world_;
    NodePtr node_;
    std::size_t size_;
};

void FakeFileSystem::changed(Node &node) {
    node.modified = ++clock_;
    node.dirty = true;
    if (powerStep_ != 0) node.unsynced.push_back(node.now);
}

std::unique_ptr<FileSystem::File> FakeFileSystem::hold(const NodePtr &node) {
    if (!node->held.expired()) fail(std::errc::resource_unavailable_try_again);
    return std::make_unique<OpenFile>(*this, node);
}

FakeFileSystem::NodePtr FakeFileSystem::find(const std::string &path) const {
    const auto found = names_.find(path);
    return found == names_.end() ? nullptr : found->second;
}

FakeFileSystem::NodePtr FakeFileSystem::demand(const std::string &path) const {
    if (const auto node = find(path)) return node;
    fail(std::errc::no_such_file_or_directory);
}

FakeFileSystem::NodePtr FakeFileSystem::demandWritable(const std::string &path) const {
    auto node = demand(path);
    if (!node->writable) fail(std::errc::permission_denied);
    return node;
}

void FakeFileSystem::requireFolder(const std::string &path) const {
    if (demand(path)->kind != Kind::folder) fail(std::errc::not_a_directory);
}

void FakeFileSystem::apply(const NameChange &change, Names &names) {
    for (const auto &[path, node] : change.names) {
        names.erase(path);
        if (node) names.emplace(path, node);
    }
}

// Made, but not synced.
void FakeFileSystem::change(NameChange change) {
    apply(change, names_);
    unsynced_.push_back(std::move(change));
}

std::string FakeFileSystem::target(std::string path) const {
    for (int links = 0; links < 40; ++links) {
        const auto node = find(path);
        if (!node || node->linkTarget.empty()) return path;
        path = node->linkTarget.starts_with('/') ? node->linkTarget : parentOf(path) + "/" + node->linkTarget;
    }
    fail(std::errc::too_many_symbolic_link_levels);
}

std::string FakeFileSystem::resolve(const std::string &path) {
    const Lock lock = step();
    requireFolder(parentOf(path));
    const std::string at = target(path);
    requireFolder(parentOf(at));
    return at;
}

std::optional<FileSystem::Identity> FakeFileSystem::identity(const std::string &path) {
    const Lock lock = step();
    const auto node = find(target(path));
    if (!node) return std::nullopt;
    return Identity{1, node->inode, std::int64_t(node->now.bytes.size()), node->modified, node->kind};
}

std::unique_ptr<ByteSource> FakeFileSystem::open(const std::string &path) {
    const Lock lock = step();
    const auto node = find(target(path));
    if (!node) fail(std::errc::no_such_file_or_directory);
    if (node->kind != Kind::file) fail(std::errc::is_a_directory);
    return std::make_unique<OpenSource>(*this, node);
}

std::unique_ptr<FileSystem::File> FakeFileSystem::create(const std::string &path, Access access) {
    const Lock lock = step(Need::space);
    demandWritable(parentOf(path));
    if (find(path)) fail(std::errc::file_exists);
    auto node = std::make_shared<Node>();
    node->inode = ++lastInode_;
    node->now.attributes = access == Access::owner ? "owner" : "usual";
    changed(*node);
    change({parentOf(path), {{path, node}}});
    return hold(node);
}

bool FakeFileSystem::removeAbandoned(const std::string &path) {
    const Lock lock = step();
    const auto node = find(path);
    if (!node || !node->held.expired() || !demand(parentOf(path))->writable) return false;
    change({parentOf(path), {{path, nullptr}}});
    return true;
}

std::unique_ptr<FileSystem::File> FakeFileSystem::holdAbandoned(const std::string &path) {
    const Lock lock = step();
    const auto node = find(path);
    return node && node->held.expired() ? hold(node) : nullptr;
}

bool FakeFileSystem::share(const std::string &path, const std::string &as) {
    const Lock lock = step();
    if (can_.sharing) put(as, demand(target(path))->now.bytes);
    return can_.sharing;
}

bool FakeFileSystem::addName(const std::string &path, const std::string &name) {
    const Lock lock = step();
    if (can_.names) change({parentOf(name), {{name, demand(target(path))}}});
    return can_.names;
}

std::unique_ptr<FileSystem::File> FakeFileSystem::overwrite(const std::string &path) {
    const Lock lock = step();
    return hold(demandWritable(path));
}

void FakeFileSystem::copyAttributes(const std::string &from, const std::string &to) {
    const Lock lock = step();
    const auto target = demand(to);
    target->now.attributes = demand(from)->now.attributes;
    changed(*target);
}

void FakeFileSystem::rename(const std::string &from, const std::string &to) {
    const Lock lock = step();
    const auto node = demand(from);
    if (parentOf(from) != parentOf(to)) fail(std::errc::cross_device_link);
    if (demandWritable(parentOf(to))->sticky && find(to)) fail(std::errc::operation_not_permitted);
    change({parentOf(to), {{from, nullptr}, {to, node}}});
}

void FakeFileSystem::remove(const std::string &path) {
    const Lock lock = step();
    demand(path);
    demandWritable(parentOf(path));
    change({parentOf(path), {{path, nullptr}}});
}

void FakeFileSystem::makeFolders(const std::string &path) {
    const Lock lock = step();
    makeFolder(path);
}

void FakeFileSystem::createFolder(const std::string &path) {
    const Lock lock = step(Need::space);
    demandWritable(parentOf(path));
    if (find(path)) fail(std::errc::file_exists);
    makeFolder(path);
}

std::vector<std::string> FakeFileSystem::list(const std::string &folder) {
    const Lock lock = step();
    requireFolder(folder);
    return names(folder);
}

void FakeFileSystem::moveToTrash(const std::string &path) {
    const Lock lock = step();
    const auto node = demand(path);
    demandWritable(parentOf(path));
    makeFolder(trashFolder);
    change({parentOf(path), {{path, nullptr}, {trashFolder + path.substr(path.rfind('/')), node}}});
}

std::int64_t FakeFileSystem::freeBytes(const std::string &folder) {
    const Lock lock = step();
    requireFolder(folder);
    return free_;
}

void FakeFileSystem::syncFolder(const std::string &folder) {
    const Lock lock = step();
    requireFolder(folder);
    for (const NameChange &change : unsynced_)
        if (change.folder == folder) apply(change, onDevice_);
    std::erase_if(unsynced_, [&](const NameChange &change) { return change.folder == folder; });
}

void FakeFileSystem::requireWritable(const std::string &path) {
    const Lock lock = step();
    demandWritable(path);
}

}  // namespace kiv
