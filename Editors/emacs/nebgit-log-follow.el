;;; nebgit-log-follow.el --- Keeps the log up to date  -*- lexical-binding: t; -*-

;; SPDX-License-Identifier: MIT

;;; Commentary:

;; Reads the log again after a commit, a switch to another branch or a fetch, also in a terminal.
;; Point stays on its commit.  A reader of older commits than those of the first page is not
;; disturbed: the log is read again when point comes back there.

;;; Code:

(require 'nebgit-log)
(require 'nebgit-watch)

(defvar-local nebgit-log-follow--outdated nil
  "Whether the history has changed since the log was read.")

(defun nebgit-log-follow--begin ()
  "Keep the log in the current buffer up to date."
  (add-hook 'post-command-hook #'nebgit-log-follow--refresh nil t))

(defun nebgit-log-follow--changed (root &optional what)
  "Read the logs of ROOT again if WHAT, or nil if that is not known, concerns them.
If the server reports all changes, it also reports those of requests, for which
WHAT is nil."
  (when (if what
            (seq-intersection what '("head" "references"))
          (not (nebgit-watched-p root)))
    (dolist (buffer (buffer-list))
      (with-current-buffer buffer
        (when (and (derived-mode-p 'nebgit-log-mode) (equal default-directory root))
          (setq nebgit-log-follow--outdated t)
          (nebgit-log-follow--refresh))))))

(defun nebgit-log-follow--refresh ()
  "Read an outdated log again, unless older commits are being read."
  (when (and nebgit-log-follow--outdated
             (cl-every #'nebgit-log-follow--on-first-page-p
                       (cons (point) (mapcar #'window-point
                                             (get-buffer-window-list nil nil t)))))
    (setq nebgit-log-follow--outdated nil)
    (nebgit-log-refresh)))

(defun nebgit-log-follow--on-first-page-p (position)
  "Return non-nil if POSITION is in the first page of the log."
  (<= (count-lines (point-min) position) nebgit-log-page))

(add-hook 'nebgit-log-mode-hook #'nebgit-log-follow--begin)
(add-hook 'nebgit-changed-hook #'nebgit-log-follow--changed)

(provide 'nebgit-log-follow)
;;; nebgit-log-follow.el ends here
