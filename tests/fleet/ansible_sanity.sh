#!/bin/bash
# SPDX-License-Identifier: Apache-2.0
# The sanity tests of ansible-test that need no network: those without requirements of their own, and validate-modules with
# Debian's packages. The others (ansible-doc, import, pep8, pylint, runtime-metadata, yamllint) fetch what they need from PyPI; what
# the first two look at the tests of the collection do.
#
#   ansible_sanity.sh SOURCE_DIR
set -eu
here=$(dirname "$0")
# shellcheck source=../packaging/check.sh
. "$here/../packaging/check.sh"
source=$(cd "$1" && pwd)
command -v ansible-test >/dev/null || { echo 'Skipped: ansible-test is not installed (package ansible-core).'; exit 77; }
scratch
export HOME=$scratch/home LC_ALL=C.UTF-8
mkdir -p "$HOME" "$scratch/ansible_collections/marovelton"
cp -r "$source/fleet/ansible" "$scratch/ansible_collections/marovelton/display"
cd "$scratch/ansible_collections/marovelton/display"

sanity() { # sanity ARGUMENT...: the tests that failed
    ansible-test sanity "$@" >"$scratch/log" 2>&1 </dev/null && return 0
    cat "$scratch/log"
    failed "ansible-test sanity $*"
}
arguments=
for test in changelog empty-init future-import-boilerplate ignores line-endings metaclass-boilerplate no-assert no-basestring \
    no-dict-iteritems no-dict-iterkeys no-dict-itervalues no-get-exception no-illegal-filenames no-main-display \
    no-smart-quotes no-unicode-literals replace-urlopen shebang symlinks use-argspec-type-path use-compat-six; do
    arguments="$arguments --test $test"
done
# shellcheck disable=SC2086 # a list
sanity $arguments
expect 'all of them were run' 21 "$(grep -c '^Running sanity test' "$scratch/log")"
sanity --test compile --python "$(/usr/bin/python3 -c 'import sys; print("%d.%d" % sys.version_info[:2])')"
# They find what is wrong.
mkdir "$scratch/kept"
cp plugins/modules/display_facts.py "$scratch/kept"
printf 'assert True\n' >>plugins/modules/display_facts.py
expect 'a mistake is found' 1 "$(ansible-test sanity --test no-assert >/dev/null 2>&1 </dev/null; echo $?)"
cp "$scratch/kept/display_facts.py" plugins/modules/

validate=/usr/lib/python3/dist-packages/ansible_test/_util/controller/sanity/validate-modules
if /usr/bin/python3 -c 'import voluptuous, yaml, jinja2' 2>/dev/null && [ -d $validate ]; then
    # Modules of Ansible itself have another licence; these have that of the project.
    expect 'validate-modules finds the licence alone' "$(for module in action facts profile; do
        echo "plugins/modules/display_$module.py:0:0: Emissing-gplv3-license GPLv3 license header not found in the first 20 lines of the module"
    done)" "$(PYTHONPATH=$validate:$scratch /usr/bin/python3 $validate/validate.py --format plain \
        --collection ansible_collections/marovelton/display plugins/modules 2>&1 | LC_ALL=C sort)"
else
    failed 'validate-modules needs python3-voluptuous'
fi
report
