# SPDX-License-Identifier: Apache-2.0
from __future__ import absolute_import, division, print_function

__metaclass__ = type

DOCUMENTATION = r"""
name: monitors
short_description: The monitors of displayctl's file of monitors
description:
  - Each monitor is a host of the group C(monitors), and of a group for each of its labels.
  - Tasks run where Ansible runs, because displayctl does.
author: Marovelton Display Management (@marovelton)
options:
  plugin:
    description: Tells that the file is for this plugin.
    required: true
    choices: [marovelton.display.monitors]
  config:
    description:
      - The file of monitors. Relative to the inventory file.
      - Without it C(monitors.yaml) of the user's configuration of displayctl.
    type: path
    env:
      - name: DISPLAYCTL_CONFIG
notes:
  - The inventory file is called C(displayctl.yml) or C(displayctl.yaml), or has a name that ends so.
"""

EXAMPLES = r"""
# displayctl.yml
plugin: marovelton.display.monitors
config: /etc/displayctl/monitors.yaml
"""

import os

from ansible.errors import AnsibleParserError
from ansible.plugins.inventory import BaseInventoryPlugin


class InventoryModule(BaseInventoryPlugin):
    NAME = "marovelton.display.monitors"

    def verify_file(self, path):
        return super(InventoryModule, self).verify_file(path) and path.endswith(("displayctl.yml", "displayctl.yaml"))

    def parse(self, inventory, loader, path, cache=True):
        super(InventoryModule, self).parse(inventory, loader, path, cache)
        self._read_config_data(path)
        config = self.get_option("config") or os.path.join(
            os.environ.get("XDG_CONFIG_HOME") or "~/.config", "displayctl", "monitors.yaml"
        )
        config = os.path.join(os.path.dirname(os.path.abspath(path)), os.path.expanduser(config))
        content = loader.load_from_file(config)
        monitors = (content or {}).get("monitors")
        if not isinstance(monitors, dict):
            raise AnsibleParserError("%s lists no monitors" % config)
        inventory.add_group("monitors")
        for name, monitor in monitors.items():
            self.add_monitor(str(name), monitor, config)

    def add_monitor(self, name, monitor, config):
        labels = [str(label) for label in monitor.get("labels", [])]
        self.inventory.add_host(name, group="monitors")
        for label in labels:
            self.inventory.add_host(name, group=self.inventory.add_group(label.replace("-", "_").replace(".", "_")))
        variables = dict(
            ansible_connection="local",
            ansible_python_interpreter="{{ ansible_playbook_python }}",
            displayctl_config=config,
            displayctl_labels=labels,
            displayctl_url=monitor.get("url"),
        )
        for variable, value in variables.items():
            self.inventory.set_variable(name, variable, value)
