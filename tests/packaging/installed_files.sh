# SPDX-License-Identifier: Apache-2.0
# shellcheck shell=sh
# What the components install, below the prefix. The classes are those of the registration.

provider_files() { echo lib/cmpi/libcmpiDisplayManagement.so; }

registration_files() { # registration_files SOURCE_DIR
    {
        for file in libcmpiDisplayManagement.reg libcmpiDisplayManagement.registration \
            libcmpiDisplayManagement_providers.mof register-providers mof/ZT_Marovelton.mof; do
            echo "share/libcmpiDisplayManagement/$file"
        done
        sed -n 's|^\[\(.*\)\]$|share/libcmpiDisplayManagement/mof/\1.mof|p' "$1/mof/libcmpiDisplayManagement.reg"
        echo share/man/man8/register-providers.8.gz
    } | LC_ALL=C sort
}

development_files() { echo include/monitor_support.h; }

host_files() {
    cat <<'FILES'
bin/display-host
lib/systemd/system/display-host-https.socket
lib/systemd/system/display-host.service
lib/systemd/system/display-host.socket
share/doc/display-host/examples/display-host.conf
FILES
    echo share/libcmpiDisplayManagement/libcmpiDisplayManagement.profiles
    for file in CIM_superclasses.mof Linux_ComputerSystem.mof desk.mof qualifiers.mof; do
        echo "share/libcmpiDisplayManagement/mof/$file"
    done
    echo share/man/man8/display-host.8.gz
}

displayctl_files() {
    cat <<'FILES'
bin/displayctl
lib/systemd/system/displayctl-exporter.service
share/bash-completion/completions/displayctl
share/displayctl/prometheus/dashboard.json
share/displayctl/prometheus/displayctl.rules.test.yml
share/displayctl/prometheus/displayctl.rules.yml
share/displayctl/prometheus/prometheus.yml
share/fish/vendor_completions.d/displayctl.fish
share/man/man1/displayctl.1.gz
share/zsh/vendor-completions/_displayctl
FILES
}

# The Ansible collection, as it stands in the source directory.
collection_files() { # collection_files SOURCE_DIR
    {
        (cd "$1/fleet/ansible" && find . -name __pycache__ -prune -o -type f -print) |
            sed 's|^\.|share/ansible/collections/ansible_collections/marovelton/display|'
        echo share/lintian/overrides/ansible-collection-marovelton-display
    } | LC_ALL=C sort
}

# The guides, from what is in the source directory, and the reference as one page, which is built.
documentation_files() { # documentation_files SOURCE_DIR
    (cd "$1" && find README.md CHANGELOG.md SECURITY.md docs -maxdepth 1 ! -type d \( -name '*.md' -o -name '*.svg' \)
        find docs/pictures -name '*.png'; echo docs/reference.html) | sed 's|^|share/doc/libcmpidisplaymanagement/|' | LC_ALL=C sort
}

# What every package has besides.
package_files() { # package_files PACKAGE
    printf 'share/doc/%s/%s\n' "$1" changelog.gz "$1" copyright
}

# The files and links below a directory, those that every package has apart.
files_below() {
    (cd "$1" && find . ! -type d ! -name copyright ! -name changelog.gz | sed 's|^\./||' | LC_ALL=C sort)
}
common_files_below() {
    (cd "$1" && find . ! -type d \( -name copyright -o -name changelog.gz \) | sed 's|^\./||' | LC_ALL=C sort)
}
