// The settings file.
#include "desktop/registry_file.h"
#include "job/recent_jobs.h"
#include "settings/recent_files.h"
#include "settings/window_places.h"
#include "tests/fuzz/door.h"
#include "tests/temp_dir.h"

void melvane::fuzz::attack(std::string_view bytes) {
    const test::TempDir dir;
    RegistryFile registry(dir.write("registry.json", std::string(bytes)));
    const SettingsStore store(registry);
    const RecentFiles recent(store);
    recent.list();
    const RecentJobs jobs(store);
    WindowPlaces(store).find("player");
    Settings settings;
    store.load(settings);
    requireUsable(settings);
    {
        const RegistryBatch all = store.batch(RegistryAccess::change);
        recent.keepFolders(recent.folders());
        for (const Job& job : jobs.list()) jobs.add(job);
        store.save(settings);
    }
    Settings again;
    store.load(again);
    require(SettingsStore::texts(again) == SettingsStore::texts(settings) && store.failure() == ERROR_SUCCESS);
}
