#!/usr/bin/python
# SPDX-License-Identifier: Apache-2.0
from __future__ import absolute_import, division, print_function

__metaclass__ = type

DOCUMENTATION = r"""
module: display_facts
short_description: The settings of a monitor as facts
description:
  - Reads settings and changes nothing.
author: Marovelton Display Management (@marovelton)
options:
  settings:
    description:
      - Settings, groups or patterns, as C(displayctl show) takes them. Without any all the usual ones are read.
    type: list
    elements: str
    default: []
extends_documentation_fragment: marovelton.display.displayctl
"""

EXAMPLES = r"""
- name: All settings
  marovelton.display.display_facts:
    monitor: "{{ inventory_hostname }}"

- name: Luminances alone
  marovelton.display.display_facts:
    monitor: suite4-a
    settings: ["preset.*.luminance"]
"""

RETURN = r"""
outcome:
  description: What displayctl calls it, such as ok, busy, unreachable, login.
  returned: always
  type: str
settings:
  description: Each setting with value, unit and what it takes.
  returned: when the monitor could be read
  type: dict
  sample: {"osd.timeout": {"value": 15, "unit": "s", "writable": true, "min": 5, "max": 30}}
ansible_facts:
  description: The values alone.
  returned: when the monitor could be read
  type: dict
  contains:
    display:
      description: The value of each setting by its name.
      returned: when the monitor could be read
      type: dict
      sample: {"osd.timeout": 15}
"""

from ansible.module_utils.basic import AnsibleModule
from ansible_collections.marovelton.display.plugins.module_utils.displayctl import Displayctl, argument_spec


def main():
    module = AnsibleModule(
        argument_spec=argument_spec(settings=dict(type="list", elements="str", default=[])),
        supports_check_mode=True,
    )
    tool = Displayctl(module)
    document = tool.call("show", *module.params["settings"])
    settings = document.get("settings", {})
    values = dict((name, setting["value"]) for name, setting in settings.items())
    tool.end(document, changed=False, settings=settings, ansible_facts=dict(display=values))


if __name__ == "__main__":
    main()
