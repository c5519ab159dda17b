#!/usr/bin/python
# SPDX-License-Identifier: Apache-2.0
from __future__ import absolute_import, division, print_function

__metaclass__ = type

DOCUMENTATION = r"""
module: display_profile
short_description: Brings a monitor to a profile
description:
  - Changes the settings that are not as the profile has them, in an order in which the monitor accepts them, and reads each back.
  - When one is refused, those that were changed are taken back. The result tells whether that was possible.
author: Marovelton Display Management (@marovelton)
options:
  profile:
    description:
      - The file of the profile, on the machine where the module runs.
    type: path
  settings:
    description:
      - The settings of the profile themselves, nested by group as in the file.
    type: dict
  include_identity:
    description:
      - Whether name, place, date and network settings of the profile are applied, too. They belong to one monitor and are skipped otherwise.
    type: bool
    default: false
  keep_going:
    description:
      - Whether the rest is changed and nothing is taken back when a setting is refused.
    type: bool
    default: false
extends_documentation_fragment: marovelton.display.displayctl
"""

EXAMPLES = r"""
- name: The house profile
  marovelton.display.display_profile:
    monitor: "{{ inventory_hostname }}"
    profile: /etc/displayctl/profiles/house.yaml

- name: Two settings
  marovelton.display.display_profile:
    monitor: suite4-a
    settings:
      osd: { timeout: 15 }
      preset: { 3: { luminance: 110 } }
"""

RETURN = r"""
outcome:
  description: What displayctl calls it, such as ok, unchanged, refused, busy, unreachable, login.
  returned: always
  type: str
changes:
  description: What was done, or in check mode would be done, for each setting.
  returned: when the monitor could be read
  type: list
  elements: dict
  sample: [{"setting": "osd.timeout", "old": 20, "new": 15, "result": "set"}]
rolled_back:
  description: Whether all that was changed before the refusal is as it was.
  returned: when a setting was refused
  type: bool
not_restored:
  description: What could not be taken back.
  returned: when something could not be
  type: list
  elements: str
"""

import json
import os
import tempfile

from ansible.module_utils.basic import AnsibleModule
from ansible_collections.marovelton.display.plugins.module_utils.displayctl import Displayctl, argument_spec


def profile_file(module):
    """The file of the profile; of settings that stand in the task one that goes with the module."""
    if module.params["profile"]:
        return module.params["profile"]
    handle, name = tempfile.mkstemp(suffix=".yaml", dir=module.tmpdir)
    with os.fdopen(handle, "w") as stream:
        json.dump({"displayctl": 1, "settings": module.params["settings"]}, stream)
    module.add_cleanup_file(name)
    return name


def difference(changes):
    """As --diff shows it: the settings before and after."""
    return dict(
        before=dict((change["setting"], change.get("old")) for change in changes),
        after=dict((change["setting"], change.get("new")) for change in changes),
    )


def look(module, tool, arguments):
    """Check mode: what would be done, without doing it."""
    document = tool.call("apply", "--dry-run", *arguments)
    values = tool.call("diff", *arguments).get("differences", [])
    before = dict((value["setting"], value["monitor"]) for value in values)
    changes = [
        dict(setting=step["setting"], old=before.get(step["setting"]), new=step["new"])
        for step in document.get("plan", [])
        if not step["temporary"]
    ]
    tool.end(document, changed=bool(changes), changes=changes, diff=difference(changes))


def bring(tool, arguments, keep_going):
    """What is not as the profile has it is changed."""
    document = tool.call("apply", *(arguments + (["--keep-going"] if keep_going else [])))
    changes = document.get("changes", [])
    made = [change for change in changes if change["result"] == "set"]
    result = dict(changed=bool(made), changes=changes, diff=difference(made))
    left = document.get("not-restored", [])
    if document["outcome"] not in ("ok", "unchanged") and changes and not keep_going:
        result["rolled_back"] = not made and not left
        result["changed"] = not result["rolled_back"]
    if left:
        result["not_restored"] = left
    tool.end(document, **result)


def main():
    module = AnsibleModule(
        argument_spec=argument_spec(
            profile=dict(type="path"),
            settings=dict(type="dict"),
            include_identity=dict(type="bool", default=False),
            keep_going=dict(type="bool", default=False),
        ),
        mutually_exclusive=[("profile", "settings")],
        required_one_of=[("profile", "settings")],
        supports_check_mode=True,
    )
    tool = Displayctl(module)
    arguments = [profile_file(module)]
    arguments.append("--include-identity" if module.params["include_identity"] else "--skip-identity")
    if module.check_mode:
        look(module, tool, arguments)
    bring(tool, arguments, module.params["keep_going"])


if __name__ == "__main__":
    main()
