;;; nebgit-garbage.el --- Collects garbage in pauses  -*- lexical-binding: t; -*-

;; SPDX-License-Identifier: MIT

;;; Commentary:

;; One garbage collection takes longer than a key may wait, and the results of a large request cause
;; several.  So while requests run Emacs may allocate more memory before it collects garbage, and it
;; does so when they have ended and the user makes a pause.

;;; Code:

(defcustom nebgit-garbage-limit (* 64 1024 1024)
  "Bytes that Emacs allocates before it collects garbage while requests run.
When they have ended, Emacs collects the garbage in the next pause, and
`gc-cons-threshold' has its own value again.  Nil leaves that as it is."
  :type '(choice (natnum :tag "Bytes") (const :tag "As `gc-cons-threshold' says" nil))
  :group 'nebgit)

(defconst nebgit-garbage--pause 1
  "Seconds without a request and without input that are a pause.")

(defvar nebgit-garbage--requests 0
  "Number of running requests.")

(defvar nebgit-garbage--threshold nil
  "The value of `gc-cons-threshold' to set again, and the one set meanwhile.
A pair; nil if the variable has its own value.")

(defvar nebgit-garbage--timer nil
  "Timer that waits for a pause.")

(defun nebgit-garbage-request-begins ()
  "Note that a request begins: collect no garbage until it has ended."
  (setq nebgit-garbage--requests (1+ nebgit-garbage--requests))
  (when (and nebgit-garbage-limit (< gc-cons-threshold nebgit-garbage-limit)
             (not (eql gc-cons-threshold (cdr nebgit-garbage--threshold))))
    (setq nebgit-garbage--threshold (cons gc-cons-threshold nebgit-garbage-limit)
          gc-cons-threshold nebgit-garbage-limit)))

(defun nebgit-garbage-request-ends ()
  "Note that a request ended; after the last one collect the garbage in a pause."
  (setq nebgit-garbage--requests (1- nebgit-garbage--requests))
  (when (zerop nebgit-garbage--requests)
    (nebgit-garbage--wait)))

(defun nebgit-garbage--wait ()
  "Wait for a pause."
  (when nebgit-garbage--timer
    (cancel-timer nebgit-garbage--timer))
  (setq nebgit-garbage--timer
        (and nebgit-garbage--threshold
             (run-at-time nebgit-garbage--pause nil #'nebgit-garbage--requests-paused))))

(defun nebgit-garbage--requests-paused ()
  "Collect the garbage if there is no input either, or wait for such a pause."
  (if (or noninteractive (time-less-p nebgit-garbage--pause (or (current-idle-time) 0)))
      (nebgit-garbage--collect)
    (setq nebgit-garbage--timer
          (run-with-idle-timer nebgit-garbage--pause nil #'nebgit-garbage--collect))))

(defun nebgit-garbage--collect ()
  "Collect the garbage, and restore `gc-cons-threshold'.
Do nothing while there is a request.  A value that another program set
meanwhile stays."
  (setq nebgit-garbage--timer nil)
  (when (and nebgit-garbage--threshold (zerop nebgit-garbage--requests))
    (when (eql gc-cons-threshold (cdr nebgit-garbage--threshold))
      (garbage-collect)
      (setq gc-cons-threshold (car nebgit-garbage--threshold)))
    (setq nebgit-garbage--threshold nil)))

(provide 'nebgit-garbage)
;;; nebgit-garbage.el ends here
