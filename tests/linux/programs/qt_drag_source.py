"""A window of Qt from which the files of the command line can be dragged: qt_drag_source.py TIMES FILE...

The list of files is handed over that many times, for a long one.
"""
import sys

from PyQt5.QtCore import QMimeData, Qt, QUrl
from PyQt5.QtGui import QDrag
from PyQt5.QtWidgets import QApplication, QWidget


class Source(QWidget):
    def mouseMoveEvent(self, _event):
        data = QMimeData()
        data.setUrls([QUrl.fromLocalFile(name) for name in sys.argv[2:]] * int(sys.argv[1]))
        drag = QDrag(self)
        drag.setMimeData(data)
        drag.exec(Qt.CopyAction)


application = QApplication(sys.argv[:1])
source = Source()
source.setWindowTitle("drag source")
source.resize(200, 200)
source.show()
application.exec()
