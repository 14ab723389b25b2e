#include "convert/dependency_set.h"

void DependencySet::writeTo(std::ostream& out) const {
    for (const std::string& p : paths_) out << p << '\n';
}
