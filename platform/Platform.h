// The world as the model sees it.
#pragma once

namespace tavo {

class ApplicationSource;
class ChildProcess;
class DefaultsStore;
class FileManager;
class MainQueue;
class RunningApplications;
class Workspace;

// One adapter for each port. All must outlive the model.
struct Platform {
    DefaultsStore& defaults;
    FileManager& files;
    ApplicationSource& applications;
    Workspace& workspace;
    RunningApplications& running;
    ChildProcess& processes;
    MainQueue& mainQueue;
};

}  // namespace tavo
