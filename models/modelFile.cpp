#include "models/modelFile.h"

#include "ravolt/zlf.h"

bool ravolt::readModelFile(const char *path, const char *loader, FileBytes &file) {
    switch (file.read(path)) {
    case FileBytes::Result::ok:
        return true;
    case FileBytes::Result::notOpened:
        zlfLog("   [!] Unable to open file %s @ %s\n", path, loader);
        break;
    case FileBytes::Result::outOfMemory:
        zlfLog("   [!] Out of memory for file %s @ %s\n", path, loader);
        break;
    case FileBytes::Result::shortRead:
        zlfLog("   [!] Corrupted file %s @ %s\n", path, loader);
        break;
    }
    return false;
}
