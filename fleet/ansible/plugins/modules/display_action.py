#!/usr/bin/python
# SPDX-License-Identifier: Apache-2.0
from __future__ import absolute_import, division, print_function

__metaclass__ = type

DOCUMENTATION = r"""
module: display_action
short_description: Does something on a monitor
description:
  - Runs an action, such as C(factory-reset), C(power-off), C(swap-inputs), C(4k-corner), C(reset-calibration last) or
    C(reset-calibration factory).
  - An action is done each time that the task runs. It is not idempotent, except where the monitor itself says that nothing is to do.
  - In check mode the monitor is asked by C(displayctl why) whether it would accept the action.
author: Marovelton Display Management (@marovelton)
options:
  action:
    description:
      - The action with its argument, as C(displayctl run) takes it.
    type: str
    required: true
  confirm:
    description:
      - Nothing is done unless this is true. Some actions cannot be undone, and C(power-off) switches the monitor off for good.
    type: bool
    default: false
extends_documentation_fragment: marovelton.display.displayctl
"""

EXAMPLES = r"""
- name: Back to the last calibration
  marovelton.display.display_action:
    monitor: "{{ inventory_hostname }}"
    action: reset-calibration last
    confirm: true
"""

RETURN = r"""
outcome:
  description: What displayctl calls it, such as ok, unchanged, refused, busy, unreachable, login.
  returned: always
  type: str
changes:
  description: Settings that the action has changed.
  returned: when it was done
  type: list
  elements: dict
before:
  description: The profile that was saved before, of an action that cannot be undone.
  returned: when it was saved
  type: str
rule:
  description: Why it is refused.
  returned: when it is refused
  type: str
first:
  description: What unlocks it.
  returned: when it is refused
  type: list
  elements: str
"""

from ansible.module_utils.basic import AnsibleModule
from ansible_collections.marovelton.display.plugins.module_utils.displayctl import Displayctl, argument_spec


def main():
    module = AnsibleModule(
        argument_spec=argument_spec(
            action=dict(type="str", required=True),
            confirm=dict(type="bool", default=False),
        ),
        supports_check_mode=True,
    )
    action = module.params["action"]
    if not module.params["confirm"]:
        module.fail_json(msg="%s is done with confirm: true only" % action)
    tool = Displayctl(module)
    document = tool.call("why" if module.check_mode else "run", *action.split())
    result = dict((name, document[name]) for name in ("changes", "before", "rule", "first") if name in document)
    if module.check_mode and document["outcome"] == "unknown" and "accepted" in document:
        module.warn("whether it is accepted cannot be known beforehand")
        document = dict(document, outcome="ok")
    tool.end(document, changed=document["outcome"] == "ok", **result)


if __name__ == "__main__":
    main()
