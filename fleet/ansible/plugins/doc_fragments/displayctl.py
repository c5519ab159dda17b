# SPDX-License-Identifier: Apache-2.0
from __future__ import absolute_import, division, print_function

__metaclass__ = type


class ModuleDocFragment(object):
    """The options of every module."""

    DOCUMENTATION = r"""
options:
  monitor:
    description:
      - The monitor, by its name in the file of monitors, or a URL. Exactly one.
    type: str
    required: true
  config:
    description:
      - The file of monitors. Without it displayctl looks where it always does.
    type: path
  executable:
    description:
      - The program.
    type: path
    default: displayctl
  timeout:
    description:
      - Seconds for each request to the monitor. Without it displayctl's own limit holds.
    type: float
requirements:
  - displayctl
notes:
  - A monitor that is not reachable is reported as an unreachable host, with what displayctl said.
  - Passwords are not given to the module. displayctl takes them from its password file or from C(DISPLAYCTL_PASSWORD).
"""
